#pragma once

#include "support/move/MoveToApplications.h"

/// The launch's question: a portable copy (a folder "….app" that holds the program's tree) that does not lie in an
/// Applications folder offers to move there, whatever other copies run. Any other copy goes on at once, and so does one
/// that runs already, as starting it again is no launch; while its question is on the screen, starting it again ends.
/// Needs a QApplication, and belongs before anything else is set up, even before another running copy is told of this
/// start. Main thread, which waits.
[[nodiscard]] MoveOutcome moveToApplicationsFolderIfNecessary();
