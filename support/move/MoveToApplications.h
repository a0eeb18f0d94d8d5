#pragma once

#include "support/move/MoveCommands.h"
#include "support/move/MoveOperations.h"

class StringTable;

/// What the program does after the question whether to move.
enum class MoveOutcome
{
    /// It goes on: there was no question, the user declined, or the move failed.
    Stays,
    /// It has to end with status 0: another copy is running, or starts when this one has ended.
    Ends
};

/// Offers to move the running copy to the Applications folder and to start it again from there. Waits for the answer
/// and the move. Called once, before anything else is set up. Main thread.
[[nodiscard]] MoveOutcome moveToApplications(const MoveSurroundings& surroundings, const MoveCommands& commands,
                                             const StringTable& texts, MoveOperations& operations);
