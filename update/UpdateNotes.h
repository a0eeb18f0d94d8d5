#pragma once

#include <QString>

/// What is new in a version, as plain text: notes in HTML lose their markup, with what it would fetch from elsewhere.
/// Characters that do not show are dropped, and long notes are cut. Needs a GUI application.
[[nodiscard]] QString plainNotes(const QString& notes, bool mayBeHtml);

/// A short text of the feed on one line, without characters that do not show, cut at 64 characters.
[[nodiscard]] QString shortLine(const QString& text);
