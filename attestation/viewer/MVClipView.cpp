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

// On purpose like a change of bounds: the base class would move the document before it is centred.
void MVClipView::viewFrameChanged()
{
    ClipView::viewBoundsChanged();
    centerView();
}

void MVClipView::frameWasSet()
{
    ClipView::frameWasSet();
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
