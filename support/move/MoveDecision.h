#pragma once

#include "support/move/MoveOperations.h"

/// Where the copy would move to, and what that needs.
struct MoveDecision
{
    /// Whether the bundle lies inside another application's bundle.
    bool isNested = false;
    /// The device of the mounted disk image that holds the bundle.
    std::optional<QString> diskImageDevice;
    QString installFolder;
    /// Whether it is the user's own Applications folder.
    bool isUserFolder = false;
    QString destinationPath;
    bool needsAuthorization = false;
};

/// The move to offer; absent when the copy stays where it is without a question.
[[nodiscard]] std::optional<MoveDecision> decideMove(const MoveSurroundings& surroundings, MoveOperations& operations);

/// Whether a file name has the extension "app".
[[nodiscard]] bool hasApplicationExtension(QStringView name);
