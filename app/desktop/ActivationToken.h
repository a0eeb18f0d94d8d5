#pragma once

#include <QString>

#include <optional>

/// A Wayland compositor's permission to bring a window to the front. The program that the user acted on gets it and
/// hands it to the one that has the window. On X11 there are none.
namespace ActivationToken {

/// That of this start.
[[nodiscard]] std::optional<QString> ofThisStart();

/// Uses the token for the window that is activated next. Anything that is no token is ignored. Main thread.
void use(const QString& token);

} // namespace ActivationToken
