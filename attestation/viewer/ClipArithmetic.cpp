#include "attestation/viewer/ClipArithmetic.h"

#include <QtNumeric>

#include <algorithm>
#include <cmath>

namespace {

double rounded(double number)
{
    return double(std::round(static_cast<float>(number)));
}

double constrained(double proposed, double document, double bounds)
{
    if (bounds > document)
        return rounded((document - bounds) * 0.5);
    return rounded(std::clamp(proposed, 0.0, document - bounds));
}

double centred(double origin, double document, double bounds)
{
    return bounds > document ? rounded((document - bounds) * 0.5) : origin;
}

// Scaling down and back has rounding errors, but the page must get exactly its original size.
double withoutRoundingError(double scale)
{
    return qFuzzyCompare(scale, 1.0) ? 1.0 : scale;
}

} // namespace

std::optional<double> fittingScale(QSizeF needed, QSizeF available)
{
    const bool tooWide = needed.width() > available.width();
    const bool tooHigh = needed.height() > available.height();
    if (!tooWide && !tooHigh)
        return std::nullopt;
    const double horizontal = tooWide ? available.width() / needed.width() : 1;
    const double vertical = tooHigh ? available.height() / needed.height() : 1;
    return std::min(horizontal, vertical);
}

QPointF constrainedOrigin(QPointF proposed, QSizeF document, QSizeF bounds)
{
    return {constrained(proposed.x(), document.width(), bounds.width()),
            constrained(proposed.y(), document.height(), bounds.height())};
}

QPointF centredOrigin(QSizeF document, const QRectF& bounds)
{
    return {centred(bounds.x(), document.width(), bounds.width()),
            centred(bounds.y(), document.height(), bounds.height())};
}

QRectF BoundsTransform::bounds() const
{
    return {m_boundsOrigin, sizeFromWindow(m_frame.size())};
}

QSizeF BoundsTransform::sizeToWindow(QSizeF size) const
{
    return {size.width() * m_scale.width(), size.height() * m_scale.height()};
}

QSizeF BoundsTransform::sizeFromWindow(QSizeF size) const
{
    return {size.width() / m_scale.width(), size.height() / m_scale.height()};
}

void BoundsTransform::scaleUnitSquareToSize(QSizeF factors)
{
    const bool isPositive = factors.width() > 0 && factors.height() > 0;
    if (!isPositive)
        return;
    const QSizeF scale = sizeToWindow(factors);
    m_scale = {withoutRoundingError(scale.width()), withoutRoundingError(scale.height())};
}

QTransform BoundsTransform::toFrame() const
{
    return QTransform::fromScale(m_scale.width(), m_scale.height()).translate(-m_boundsOrigin.x(), -m_boundsOrigin.y());
}
