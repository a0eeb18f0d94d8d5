#pragma once

#include <QCborMap>
#include <QString>
#include <QStringList>

/// A message's body for the log: its keys and its short values. Of documents, and of all that comes from a card, only
/// type and size are told: patients' data never reach the log, at any level.
[[nodiscard]] QString messageLogText(const QCborMap& body);

/// The text with "?" for control characters, so that it stays one line and cannot play with a terminal.
[[nodiscard]] QString printableText(const QString& text);
/// The same for each text of a list.
[[nodiscard]] QStringList printableTexts(const QStringList& texts);
