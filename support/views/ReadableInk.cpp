#include "support/views/ReadableInk.h"

#include <algorithm>
#include <cmath>

namespace {

// The transfer curve of sRGB in those guidelines.
double linear(double channel)
{
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour)
{
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

} // namespace

double contrastRatio(const QColor& one, const QColor& other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor readableInk(const QColor& background)
{
    // Not black, but still at 4.5 or more on every colour where white is not.
    const QColor dark(16, 20, 16);
    const QColor light(Qt::white);
    return contrastRatio(light, background) >= contrastRatio(dark, background) ? light : dark;
}
