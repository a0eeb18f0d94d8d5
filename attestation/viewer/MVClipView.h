#pragma once

#include "attestation/viewer/ClipView.h"

/// The clip view of the viewer: applies the scale that the scroll view asks for and keeps the page centred. Main thread
/// only.
class MVClipView final : public ClipView
{
    Q_OBJECT

public:
    explicit MVClipView(QWidget* parent = nullptr);

    /// To be called when the layout file has been loaded: nothing of it may resize the page.
    void awakeFromNib();

    /// Centres the document where there is more room than it needs, and lets the scroll view follow.
    void centerView();
    [[nodiscard]] QPointF constrainScrollPoint(QPointF proposed) const override;

    void viewBoundsChanged() override;
    void viewFrameChanged() override;
    void setFrame(const QRect& frame) override;
    void setFrameOrigin(QPoint origin) override;
    void setFrameSize(QSize size) override;
    void setFrameRotation(double angle) override;

    /// The size in the window of one point of the page by one. The scale is the view's transform, kept nowhere else.
    [[nodiscard]] QSizeF scale() const;
    void setScale(QSizeF scale);
    /// Back to exactly one to one.
    void resetScaling();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
};
