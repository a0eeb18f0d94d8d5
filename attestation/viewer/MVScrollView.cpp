#include "attestation/viewer/MVScrollView.h"

#include "attestation/viewer/DocumentView.h"
#include "attestation/viewer/MVClipView.h"

#include <QEvent>

namespace {

constexpr QSizeF air{20, 20}; // points, in all: half of it on either side

} // namespace

MVScrollView::MVScrollView(QWidget* parent)
    : ScrollView(parent)
{
}

QSizeF MVScrollView::neededSize() const
{
    const DocumentView* document = documentView();
    return (document != nullptr ? document->documentSize() : QSizeF(0, 0)) + air;
}

void MVScrollView::changeClipViewScale()
{
    auto* clip = qobject_cast<MVClipView*>(contentView());
    if (clip == nullptr)
        return;
    if (const std::optional<double> scale = fittingScale(neededSize(), size()))
        clip->setScale({*scale, *scale});
    else
        clip->resetScaling();
}

void MVScrollView::setFrame(const QRect& frame)
{
    ScrollView::setFrame(frame);
    changeClipViewScale();
}

void MVScrollView::setFrameOrigin(QPoint origin)
{
    ScrollView::setFrameOrigin(origin);
    changeClipViewScale();
}

void MVScrollView::setFrameSize(QSize size)
{
    ScrollView::setFrameSize(size);
    changeClipViewScale();
}

void MVScrollView::setFrameRotation(double angle)
{
    ScrollView::setFrameRotation(angle);
    changeClipViewScale();
}

QSize MVScrollView::sizeHint() const
{
    return neededSize().toSize();
}

// A layout, or the user at the window's edge, sets the frame too.
bool MVScrollView::event(QEvent* event)
{
    const bool wasHandled = ScrollView::event(event);
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move)
        changeClipViewScale();
    return wasHandled;
}
