#include "attestation/viewer/ScrollView.h"

#include "attestation/viewer/ClipView.h"
#include "attestation/viewer/DocumentView.h"

#include <QEvent>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>

namespace {

// In points.
void reflect(QScrollBar& bar, double origin, double bounds, double document)
{
    bar.setPageStep(qRound(bounds));
    bar.setRange(0, std::max(0, qRound(document - bounds)));
    bar.setValue(qRound(origin));
}

} // namespace

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
    frameWasSet();
}

void ScrollView::setFrameOrigin(QPoint origin)
{
    move(origin);
    frameWasSet();
}

void ScrollView::setFrameSize(QSize size)
{
    resize(size);
    frameWasSet();
}

void ScrollView::setFrameRotation(double /*angle*/)
{
    frameWasSet();
}

// Layouts and the user change the frame too.
bool ScrollView::event(QEvent* event)
{
    const bool wasHandled = QAbstractScrollArea::event(event);
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move)
        frameWasSet();
    return wasHandled;
}

void ScrollView::reflectScrolledClipView()
{
    const ClipView* clip = clipView();
    if (clip == nullptr)
        return;
    const QRectF bounds = clip->bounds();
    const QSizeF document = clip->documentSize();
    // The scroll bars' signals must not scroll the document here.
    const QScopedValueRollback reflecting(m_isReflecting, true);
    reflect(*horizontalScrollBar(), bounds.x(), bounds.width(), document.width());
    reflect(*verticalScrollBar(), bounds.y(), bounds.height(), document.height());
}

// The clip view handles its own size and painting.
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
