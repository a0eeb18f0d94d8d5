#pragma once

#include "platform/Error.h"

#include <QStringList>
#include <QVariantMap>

#include <expected>

/// Which reader is whose, by the keys of ReaderKey: the accepted model for the health card, wherever it stands in the
/// list, and another one, if there is one, for the professional card. No reader at all and no accepted one are errors.
[[nodiscard]] std::expected<QVariantMap, Error> readerChoice(QStringList names);
