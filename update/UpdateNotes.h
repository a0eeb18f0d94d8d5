#pragma once

#include <QString>

/// Notes as plain text: without markup, without anything loaded from elsewhere, without invisible characters, and
/// shortened. Needs a GUI application.
[[nodiscard]] QString plainNotes(const QString& notes, bool mayBeHtml);

/// A text on one line, without invisible characters, at most 64 characters.
[[nodiscard]] QString shortLine(const QString& text);
