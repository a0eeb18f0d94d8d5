#pragma once

#include <QByteArray>
#include <QPointF>
#include <QSizeF>
#include <QString>

#include <array>
#include <optional>
#include <vector>

/// A step along an outline: where it goes, and for a curve its two control points before that.
struct OutlineStep
{
    enum class Kind
    {
        Move,
        Line,
        Curve,
        Close
    };

    Kind kind = Kind::Move;
    std::array<QPointF, 3> points;
};

/// An outline filled with one opaque colour.
struct FilledOutline
{
    std::array<double, 3> color{}; ///< red, green, blue, from 0 to 1
    bool isEvenOdd = false;        ///< how what lies inside is told: by the even-odd rule, or by the non-zero one
    std::vector<OutlineStep> steps;
};

/// A drawing of filled outlines, in units of its own, y downwards.
struct VectorImage
{
    QString title; ///< what it shows, for those who cannot see it
    QSizeF size;
    std::vector<FilledOutline> outlines;
    QByteArray operators; ///< the outlines once more, as operators of a PDF's content

    /// The image of a file that resources/logos/make-logo.py made; absent when the file is not whole.
    [[nodiscard]] static std::optional<VectorImage> parsed(const QByteArray& file);
};
