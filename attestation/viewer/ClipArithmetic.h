#pragma once

#include <QRectF>
#include <QTransform>

#include <optional>

/// The scale, without a lower limit, at which the needed size fits; absent when it fits unscaled.
[[nodiscard]] std::optional<double> fittingScale(QSizeF needed, QSizeF available);

/// The origin of a clip view's bounds in its document: centred when the bounds are larger than the document, else the
/// proposed point, limited so that the document fills the bounds. Whole numbers.
[[nodiscard]] QPointF constrainedOrigin(QPointF proposed, QSizeF document, QSizeF bounds);

/// The origin that centres the document when the bounds are larger; else that of the bounds.
[[nodiscard]] QPointF centredOrigin(QSizeF document, const QRectF& bounds);

/// The transform of a view from its bounds (the visible part of its content) to its frame (in logical pixels).
class BoundsTransform
{
public:
    [[nodiscard]] const QRectF& frame() const { return m_frame; }
    /// Keeps the scale, so that another size shows more or less.
    void setFrame(const QRectF& frame) { m_frame = frame; }

    [[nodiscard]] QRectF bounds() const;
    void setBoundsOrigin(QPointF origin) { m_boundsOrigin = origin; }

    /// Converts sizes between the view's own coordinates and the window.
    [[nodiscard]] QSizeF sizeToWindow(QSizeF size) const;
    [[nodiscard]] QSizeF sizeFromWindow(QSizeF size) const;

    /// Multiplies the scale; factors that are not positive are ignored.
    void scaleUnitSquareToSize(QSizeF factors);

    /// From the view's own coordinates to points in its frame, relative to its top-left corner.
    [[nodiscard]] QTransform toFrame() const;

private:
    QRectF m_frame;
    QPointF m_boundsOrigin;
    QSizeF m_scale{1, 1}; // of a unit of the bounds, in units of the frame
};
