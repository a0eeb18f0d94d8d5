#pragma once

#include "support/MoveToApplications.h"

/// The launch's question: a portable copy ("Pelmora.app") that does not lie in an Applications folder offers to move
/// there. Any other copy goes on at once, and so does one that runs already: starting it again is no launch. Needs a
/// QApplication; before anything else is set up. Main thread, which waits.
[[nodiscard]] MoveOutcome moveToApplicationsFolderIfNecessary();
