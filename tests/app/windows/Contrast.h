#pragma once

#include <QColor>
#include <QImage>

#include <algorithm>
#include <cmath>

// The contrast of a picture's content.

// The formula of the web accessibility guidelines, independent of the program's own.
inline double luminance(QRgb colour)
{
    const auto linear = [](int channel) {
        const double part = channel / 255.0;
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

inline double contrast(QRgb one, QRgb other)
{
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

// The highest contrast of a pixel to the colour in the picture's corner.
inline double drawnContrast(const QImage& picture)
{
    double best = 1;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            best = std::max(best, contrast(picture.pixel(0, 0), picture.pixel(x, y)));
    }
    return best;
}
