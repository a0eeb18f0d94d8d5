#pragma once

#include <QString>

/// "pelmora --add-launcher" and "--remove-launcher": a portable copy's entry in the menus of the user's desktop. An
/// installed program has one for all users, so these are refused for it. The results are exit codes.
[[nodiscard]] int addLauncher();
[[nodiscard]] int removeLauncher();

/// A launcher with the paths of the copy in that folder, made of the one for an installed program. When the copy is
/// deleted, desktops ignore it.
[[nodiscard]] QString launcherOfCopy(const QString& launcher, const QString& tree);
