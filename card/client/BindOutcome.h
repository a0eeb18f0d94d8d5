#pragma once

#include "platform/Error.h"

#include <QVariantMap>

#include <expected>
#include <optional>

/// How a bind ended: well, or with that error.
using BindOutcome = std::expected<void, Error>;

/// The outcome of what a bind's handler receives: a failure always has an error, the general one where none was given.
[[nodiscard]] BindOutcome bindOutcome(bool bound, const std::optional<Error>& error);

/// What a bind ends with that a newer one has replaced: no failure, as the newer one tells how it ends.
[[nodiscard]] Error replacedBindError();
[[nodiscard]] bool isReplaced(const BindOutcome& outcome);

/// The error in a bind notification's user information, if there is one.
[[nodiscard]] std::optional<Error> bindError(const QVariantMap& userInfo);

/// Posts the bind notification, at once; nothing for a bind that was replaced. Main thread only.
void postBindNotification(const BindOutcome& outcome);
