#pragma once

#include <QString>

/// A file name from any text: "/" and control characters become "_". A name over 255 bytes of UTF-8 is cut before its
/// extension, between two characters. The extension is given without its dot.
[[nodiscard]] QString fileNameFromText(const QString& text, const QString& extension);
