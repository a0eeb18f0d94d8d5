#pragma once

#include "platform/Error.h"

#include <QVariantMap>

#include <optional>

/// How a bind ended: no error when it went well.
using BindOutcome = std::optional<Error>;

/// The outcome of what a bind's handler receives: a failure always has an error, the general one where none was given.
[[nodiscard]] BindOutcome bindOutcome(bool bound, const std::optional<Error>& error);

/// The error in a bind notification's user information, if there is one.
[[nodiscard]] std::optional<Error> bindError(const QVariantMap& userInfo);

/// Posts the bind notification, at once. Main thread only.
void postBindNotification(const BindOutcome& outcome);
