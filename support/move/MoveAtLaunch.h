#pragma once

#include "support/move/MoveToApplications.h"

/// At launch, a portable copy (a folder "….app" with the program's tree) outside an Applications folder offers to move
/// there. No question is asked when this copy is already running; while another process of this copy shows the
/// question, this one ends. Needs a QApplication. Called before anything else is set up, also before another instance
/// is told of this start. Waits for the answer. Main thread.
[[nodiscard]] MoveOutcome moveToApplicationsFolderIfNecessary();
