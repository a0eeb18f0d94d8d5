#pragma once

#include "support/move/MoveCommands.h"
#include "support/move/MoveDecision.h"

/// Moves the running copy as was decided, and starts it again from its new place. Whatever operation it is interrupted
/// at, a whole copy is left: the source is not touched before the destination is whole.
class BundleMover
{
public:
    enum class End
    {
        Moved,
        /// The destination was running: it has been told to come to the front.
        Switched,
        /// The user did not give an administrator's rights.
        Cancelled,
        Failed
    };

    BundleMover(const MoveSurroundings& surroundings, const MoveDecision& decision, const MoveCommands& commands,
                MoveOperations& operations);

    [[nodiscard]] End move();

private:
    // What the first half, up to the copy, comes to.
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
