#pragma once

#include "support/move/MoveCommands.h"
#include "support/move/MoveOperations.h"

class StringTable;

/// What becomes of the program after the question whether to move.
enum class MoveOutcome
{
    /// It goes on from where it is: there was nothing to ask, the user declined, or the move failed.
    Stays,
    /// It has to end now, with status 0: another copy runs, or starts as soon as this one has ended.
    Ends
};

/// Offers to move the running copy to the Applications folder and to start it again from there. Waits for the answer
/// and for the move. Main thread, once, before anything else is set up.
[[nodiscard]] MoveOutcome moveToApplications(const MoveSurroundings& surroundings, const MoveCommands& commands,
                                             const StringTable& texts, MoveOperations& operations);
