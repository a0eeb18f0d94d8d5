#pragma once

#include <QColor>

/// The contrast ratio of the web's accessibility guidelines (WCAG), from 1 (same colour) to 21 (black and white). Text
/// needs 4.5; large bold text and drawings need 3.
[[nodiscard]] double contrastRatio(const QColor& one, const QColor& other);

/// White or nearly black, whichever is more legible on the background.
[[nodiscard]] QColor readableInk(const QColor& background);
