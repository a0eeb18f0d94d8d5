#pragma once

#include "platform/Error.h"

#include <QVariantMap>

#include <expected>
#include <optional>

/// Success, or why the bind failed.
using BindOutcome = std::expected<void, Error>;

/// The outcome from the arguments of a bind's handler; a failure without an error gets the general one.
[[nodiscard]] BindOutcome bindOutcome(bool bound, const std::optional<Error>& error);

/// The error of a bind that a newer bind has replaced. It is not reported: the newer bind has its own outcome.
[[nodiscard]] Error replacedBindError();
[[nodiscard]] bool isReplaced(const BindOutcome& outcome);

/// The error in a bind notification's user information.
[[nodiscard]] std::optional<Error> bindError(const QVariantMap& userInfo);

/// Posts the bind notification, unless the bind was replaced. Main thread only.
void postBindNotification(const BindOutcome& outcome);
