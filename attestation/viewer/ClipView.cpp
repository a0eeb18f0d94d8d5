#include "attestation/viewer/ClipView.h"

#include "attestation/viewer/DocumentView.h"
#include "attestation/viewer/ScrollView.h"

#include <QLayout>

ClipView::ClipView(QWidget* parent)
    : QWidget(parent)
{
    setAutoFillBackground(true);
}

DocumentView* ClipView::documentView() const
{
    return m_documentView;
}

void ClipView::setDocumentView(DocumentView* documentView)
{
    m_documentView = documentView;
    if (!documentView)
        return;
    documentView->setParent(this);
    documentView->show();
    connect(documentView, &DocumentView::documentSizeChanged, this, &ClipView::documentFrameWasSet);
    documentFrameWasSet();
}

QSizeF ClipView::documentSize() const
{
    return m_documentView ? m_documentView->documentSize() : QSizeF(0, 0);
}

void ClipView::setFrame(const QRect& frame)
{
    setGeometry(frame);
    frameWasSet();
}

void ClipView::setFrameOrigin(QPoint origin)
{
    move(origin);
    frameWasSet();
}

void ClipView::setFrameSize(QSize size)
{
    resize(size);
    frameWasSet();
}

void ClipView::setFrameRotation(double /*angle*/)
{
    frameWasSet();
}

void ClipView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    frameWasSet();
}

void ClipView::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    frameWasSet();
}

// The document is placed even if the bounds do not change.
void ClipView::documentFrameWasSet()
{
    placeDocument();
    viewFrameChanged();
}

// Hidden widgets get their events later.
void ClipView::frameWasSet()
{
    m_transform.setFrame(geometry());
}

void ClipView::scaleUnitSquareToSize(QSizeF factors)
{
    const QRectF before = bounds();
    m_transform.scaleUnitSquareToSize(factors);
    if (bounds() == before)
        return;
    placeDocument();
    viewBoundsChanged();
}

QPointF ClipView::constrainScrollPoint(QPointF proposed) const
{
    const QSizeF room = documentSize() - bounds().size();
    return {qBound(0.0, proposed.x(), qMax(0.0, room.width())), qBound(0.0, proposed.y(), qMax(0.0, room.height()))};
}

void ClipView::scrollToPoint(QPointF origin)
{
    if (origin == bounds().topLeft())
        return;
    m_transform.setBoundsOrigin(origin);
    placeDocument();
    viewBoundsChanged();
}

void ClipView::viewBoundsChanged()
{
    reflectScrolledClipView();
}

void ClipView::viewFrameChanged()
{
    scrollToPoint(constrainScrollPoint(bounds().topLeft()));
    reflectScrolledClipView();
}

void ClipView::turnOffAutoresizing()
{
    delete layout();
}

void ClipView::reflectScrolledClipView()
{
    if (auto* scrollView = qobject_cast<ScrollView*>(parentWidget()))
        scrollView->reflectScrolledClipView();
}

void ClipView::placeDocument()
{
    if (m_documentView)
        m_documentView->setPlacement(m_transform.toFrame());
}
