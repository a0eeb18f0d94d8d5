#pragma once

#include <QCborMap>
#include <QStringList>

/// A message's body for the log: its keys and its short values. Of documents and of everything from a card, only type
/// and size are shown, so patients' data are never logged at any level.
[[nodiscard]] QString messageLogText(const QCborMap& body);

/// The text with "?" for control characters, so that it stays one line and cannot control a terminal.
[[nodiscard]] QString printableText(const QString& text);
[[nodiscard]] QStringList printableTexts(const QStringList& texts);
