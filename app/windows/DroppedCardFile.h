#pragma once

#include <QString>

#include <optional>

class QMimeData;

/// The path of a dragged card file: exactly one local plain file that looks like XML.
[[nodiscard]] std::optional<QString> droppedCardFile(const QMimeData& data);
