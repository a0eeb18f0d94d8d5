#pragma once

#include <QColor>

/// How far apart two opaque colours are for the eye, from 1 (the same) to 21 (black and white): the contrast ratio of
/// the web's accessibility guidelines, which ask for 4.5 for text and for 3 for large bold text and drawings.
[[nodiscard]] double contrastRatio(const QColor& one, const QColor& other);

/// The colour for text and drawings on a background of one colour: white or nearly black, whichever reads better.
[[nodiscard]] QColor readableInk(const QColor& background);
