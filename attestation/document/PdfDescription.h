#pragma once

#include "attestation/document/PdfFile.h"

#include <QDateTime>

#include <string>

// What a document says of itself. Nothing of a card.

/// Its title, the program that made it and when.
[[nodiscard]] PdfReference addInformation(PdfFile& file, const QDateTime& time);

/// The same for the entries of its catalog, and its language, the standards that it keeps and the colour space that its
/// colours are meant in.
[[nodiscard]] std::string catalogDescription(PdfFile& file, const QDateTime& time);
