#pragma once

#include "attestation/viewer/ScrollView.h"

#include <QSizeF>

/// The scroll view of the viewer: shrinks the page to fit when there is less room than it needs, and never enlarges it.
/// Main thread only.
class MVScrollView final : public ScrollView
{
    Q_OBJECT

public:
    explicit MVScrollView(QWidget* parent = nullptr);

    /// Gives an MVClipView the scale at which the page, with some air around it, fits into this view's frame.
    void changeClipViewScale();

    void setFrame(const QRect& frame) override;
    void setFrameOrigin(QPoint origin) override;
    void setFrameSize(QSize size) override;
    void setFrameRotation(double angle) override;

    /// The size that shows the document as it is, with some air around it.
    [[nodiscard]] QSize sizeHint() const override;

protected:
    bool event(QEvent* event) override;

private:
    [[nodiscard]] QSizeF neededSize() const;
};
