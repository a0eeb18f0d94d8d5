#pragma once

#include "support/move/MoveOperations.h"

#include <QString>

#include <optional>

// The portable copy: a folder "Pelmora.app" with the installed tree.

/// The bundle of a running program: the nearest folder above its executable with the name "….app".
[[nodiscard]] std::optional<QString> bundleOfExecutable(const QString& executable);

/// The bundle when the tree (the folder with "libexec/pelmora") itself has the name "….app". A packaged installation is
/// never one: only a folder of the copy's own may be moved.
[[nodiscard]] std::optional<QString> portableBundleOf(const QString& executable);

/// The facts for this process in the given bundle.
[[nodiscard]] MoveSurroundings surroundingsOf(const QString& bundlePath);
