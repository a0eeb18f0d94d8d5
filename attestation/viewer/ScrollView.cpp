#include "attestation/viewer/ScrollView.h"

#include "attestation/viewer/ClipView.h"
#include "attestation/viewer/DocumentView.h"

#include <QEvent>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>

namespace {

// One direction, in points.
void reflect(QScrollBar& bar, double origin, double bounds, double document)
{
    bar.setPageStep(qRound(bounds));
    bar.setRange(0, std::max(0, qRound(document - bounds)));
    bar.setValue(qRound(origin));
}

} // namespace

ScrollView::ScrollView(QWidget* parent)
    : QAbstractScrollArea(parent)
{
}

void ScrollView::setContentView(QWidget* contentView)
{
    setViewport(contentView);
}

ClipView* ScrollView::clipView() const
{
    return qobject_cast<ClipView*>(contentView());
}

DocumentView* ScrollView::documentView() const
{
    const ClipView* clip = clipView();
    return clip != nullptr ? clip->documentView() : nullptr;
}

void ScrollView::setDocumentView(DocumentView* documentView)
{
    if (ClipView* clip = clipView())
        clip->setDocumentView(documentView);
}

void ScrollView::setFrame(const QRect& frame)
{
    setGeometry(frame);
}

void ScrollView::setFrameOrigin(QPoint origin)
{
    move(origin);
}

void ScrollView::setFrameSize(QSize size)
{
    resize(size);
}

void ScrollView::setFrameRotation(double /*angle*/)
{
}

void ScrollView::reflectScrolledClipView()
{
    const ClipView* clip = clipView();
    if (clip == nullptr)
        return;
    const QRectF bounds = clip->bounds();
    const QSizeF document = clip->documentSize();
    // What the bars are told here must not come back as a wish to scroll.
    const QScopedValueRollback reflecting(m_isReflecting, true);
    reflect(*horizontalScrollBar(), bounds.x(), bounds.width(), document.width());
    reflect(*verticalScrollBar(), bounds.y(), bounds.height(), document.height());
}

// The clip view sees to its own size and painting.
bool ScrollView::viewportEvent(QEvent* event)
{
    switch (event->type()) {
    case QEvent::Resize:
    case QEvent::Paint:
        return false;
    default:
        return QAbstractScrollArea::viewportEvent(event);
    }
}

void ScrollView::scrollContentsBy(int /*dx*/, int /*dy*/)
{
    ClipView* clip = clipView();
    if (clip == nullptr || m_isReflecting)
        return;
    const QPointF wanted(horizontalScrollBar()->value(), verticalScrollBar()->value());
    clip->scrollToPoint(clip->constrainScrollPoint(wanted));
}
