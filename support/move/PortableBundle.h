#pragma once

#include "support/move/MoveOperations.h"

#include <QString>

#include <optional>

// The portable copy: a folder "Pelmora.app" that holds the installed tree.

/// The bundle that a running program belongs to: the nearest folder above its executable that is named "….app".
[[nodiscard]] std::optional<QString> bundleOfExecutable(const QString& executable);

/// The bundle that this copy is, when its tree (the folder that its "libexec/pelmora" lies in) is named "….app". What a
/// package manager has installed is none, wherever it lies: only a folder that is the copy's own may be moved.
[[nodiscard]] std::optional<QString> portableBundleOf(const QString& executable);

/// What is known of this process, which runs from the given bundle, and of this desktop.
[[nodiscard]] MoveSurroundings surroundingsOf(const QString& bundlePath);
