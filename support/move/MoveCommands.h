#pragma once

#include "support/move/MoveOperations.h"

/// The commands that a move runs on a platform.
class MoveCommands
{
public:
    MoveCommands() = default;
    virtual ~MoveCommands() = default;
    MoveCommands(const MoveCommands&) = delete;
    MoveCommands& operator=(const MoveCommands&) = delete;

    [[nodiscard]] virtual MoveCommand openRunningCopy(const QString& destination) const = 0;
    /// Opens the copy once the process has ended.
    [[nodiscard]] virtual MoveCommand relaunch(qint64 processIdentifier, const QString& destination) const = 0;
    /// Ejects the disk image after a few seconds.
    [[nodiscard]] virtual MoveCommand ejectImage(const QString& device) const = 0;

    // These need an administrator's rights.
    [[nodiscard]] virtual MoveCommand privilegedDelete(const QString& destination) const = 0;
    [[nodiscard]] virtual MoveCommand privilegedCopy(const QString& source, const QString& destination) const = 0;
};
