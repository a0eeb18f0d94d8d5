#pragma once

#include <QString>

#include <optional>

class QMimeData;

/// Path of the card file that is dragged: exactly one file, on this machine, that looks like XML. Absent otherwise.
[[nodiscard]] std::optional<QString> droppedCardFile(const QMimeData& data);
