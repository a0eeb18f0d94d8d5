#pragma once

#include "support/move/MoveOperations.h"

/// Where a move would lead, and what it would take.
struct MoveDecision
{
    /// Whether the bundle lies inside another application's bundle.
    bool isNested = false;
    /// The device of the mounted disk image that holds the bundle.
    std::optional<QString> diskImageDevice;
    QString installFolder;
    /// Whether that is the user's own Applications folder.
    bool isUserFolder = false;
    QString destinationPath;
    bool needsAuthorization = false;
};

/// Decides whether the running copy is one to offer the move to; nothing when it stays where it is without a question.
[[nodiscard]] std::optional<MoveDecision> decideMove(const MoveSurroundings& surroundings, MoveOperations& operations);

/// Whether a file's name has the extension of applications, "app".
[[nodiscard]] bool hasApplicationExtension(QStringView name);
