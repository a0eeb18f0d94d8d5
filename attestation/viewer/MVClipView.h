#pragma once

#include "attestation/viewer/ClipView.h"

/// The viewer's clip view: applies the scale of the scroll view and keeps the page centred. Main thread only.
class MVClipView final : public ClipView
{
    Q_OBJECT

public:
    explicit MVClipView(QWidget* parent = nullptr);

    /// Called when the layout file was loaded: removes layouts that would resize the page.
    void awakeFromNib();

    /// Centres the document if there is room, and updates the scroll view.
    void centerView();
    [[nodiscard]] QPointF constrainScrollPoint(QPointF proposed) const override;

    void viewBoundsChanged() override;
    void viewFrameChanged() override;

    /// The size of a point of the page in the window. It is not stored: it is part of the view's transform.
    [[nodiscard]] QSizeF scale() const;
    void setScale(QSizeF scale);
    /// Sets the scale to exactly 1.
    void resetScaling();

protected:
    void frameWasSet() override;
};
