#pragma once

#include "platform/Error.h"

#include <QStringList>
#include <QVariantMap>

#include <expected>

/// The reader of the accepted model for the health card, and another one, if there is one, for the professional card,
/// under the keys of ReaderKey. An error when there is no reader or none of the accepted model.
[[nodiscard]] std::expected<QVariantMap, Error> readerChoice(QStringList names);
