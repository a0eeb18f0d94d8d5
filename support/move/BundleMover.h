#pragma once

#include "support/move/MoveCommands.h"
#include "support/move/MoveDecision.h"

/// Moves the running copy to its destination and starts it again from there. When it is interrupted, a whole copy is
/// left: the source is removed only after the destination is complete.
class BundleMover
{
public:
    enum class End
    {
        Moved,
        /// A copy at the destination was running, and was told to come to the front.
        Switched,
        /// The user did not grant an administrator's rights.
        Cancelled,
        Failed
    };

    BundleMover(const MoveSurroundings& surroundings, const MoveDecision& decision, const MoveCommands& commands,
                MoveOperations& operations);

    [[nodiscard]] End move();

private:
    // The part up to the copy.
    [[nodiscard]] End install();
    [[nodiscard]] End installWithAuthorization();
    [[nodiscard]] End useAuthorization();
    [[nodiscard]] bool runPrivilegedCommands(const QString& source);
    [[nodiscard]] bool isDestinationRunning();
    [[nodiscard]] bool arePathsFitForAuthorization() const;
    void removeSource();

    const MoveSurroundings& m_surroundings;
    const MoveDecision& m_decision;
    const MoveCommands& m_commands;
    MoveOperations& m_operations;
};
