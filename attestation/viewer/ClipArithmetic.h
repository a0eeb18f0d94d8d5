#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QTransform>

#include <optional>

/// The scale at which something of the needed size fits into the available one, at most 1; absent when it fits as it
/// is. There is no lower limit.
[[nodiscard]] std::optional<double> fittingScale(QSizeF needed, QSizeF available);

/// Where the bounds of a clip view may begin, in its document's points: the document is centred where the bounds are
/// larger than it, and otherwise the proposed point is kept to where the document fills the bounds. Whole numbers.
[[nodiscard]] QPointF constrainedOrigin(QPointF proposed, QSizeF document, QSizeF bounds);

/// The origin that centres the document where the bounds are larger than it; elsewhere that of the bounds.
[[nodiscard]] QPointF centredOrigin(QSizeF document, const QRectF& bounds);

/// The transform of a view from its bounds (the part of its own coordinates that it shows) to its frame (where that is
/// shown, in logical pixels). A plain value.
class BoundsTransform
{
public:
    [[nodiscard]] const QRectF& frame() const { return m_frame; }
    /// A frame of another size shows more or less at the same scale.
    void setFrame(const QRectF& frame) { m_frame = frame; }

    [[nodiscard]] QRectF bounds() const;
    void setBoundsOrigin(QPointF origin) { m_boundsOrigin = origin; }

    /// A size of the view's own coordinates as it is in the window, and back.
    [[nodiscard]] QSizeF sizeToWindow(QSizeF size) const;
    [[nodiscard]] QSizeF sizeFromWindow(QSizeF size) const;

    /// Multiplies the scale. Factors that are not positive change nothing: nothing can be seen through such a view.
    void scaleUnitSquareToSize(QSizeF factors);

    /// From the view's own coordinates to places in its frame, counted from the frame's top-left corner.
    [[nodiscard]] QTransform toFrame() const;

private:
    QRectF m_frame;
    QPointF m_boundsOrigin;
    QSizeF m_scale{1, 1}; // a unit of the bounds, in units of the frame
};
