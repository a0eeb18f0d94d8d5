#include "attestation/viewer/MVClipView.h"

MVClipView::MVClipView(QWidget* parent)
    : ClipView(parent)
{
    turnOffAutoresizing();
}

void MVClipView::awakeFromNib()
{
    turnOffAutoresizing();
}

void MVClipView::centerView()
{
    scrollToPoint(constrainScrollPoint(centredOrigin(documentSize(), bounds())));
    reflectScrolledClipView();
}

QPointF MVClipView::constrainScrollPoint(QPointF proposed) const
{
    return constrainedOrigin(proposed, documentSize(), bounds().size());
}

void MVClipView::viewBoundsChanged()
{
    ClipView::viewBoundsChanged();
    centerView();
}

// On purpose what a change of bounds does: the document is centred here, the base would move it first.
void MVClipView::viewFrameChanged()
{
    ClipView::viewBoundsChanged();
    centerView();
}

void MVClipView::setFrame(const QRect& frame)
{
    ClipView::setFrame(frame);
    centerView();
}

void MVClipView::setFrameOrigin(QPoint origin)
{
    ClipView::setFrameOrigin(origin);
    centerView();
}

void MVClipView::setFrameSize(QSize size)
{
    ClipView::setFrameSize(size);
    centerView();
}

void MVClipView::setFrameRotation(double angle)
{
    ClipView::setFrameRotation(angle);
    centerView();
}

void MVClipView::resizeEvent(QResizeEvent* event)
{
    ClipView::resizeEvent(event);
    centerView();
}

void MVClipView::moveEvent(QMoveEvent* event)
{
    ClipView::moveEvent(event);
    centerView();
}

QSizeF MVClipView::scale() const
{
    return sizeToWindow({1, 1});
}

void MVClipView::setScale(QSizeF scale)
{
    resetScaling();
    scaleUnitSquareToSize(scale);
    update();
}

void MVClipView::resetScaling()
{
    scaleUnitSquareToSize(sizeFromWindow({1, 1}));
}
