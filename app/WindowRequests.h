#pragma once

#include "app/models/DesktopAction.h"

class AppDelegate;
class MainWindow;

/// Connects tiles, menu entries and drops of the main window with their operations. Main thread.
void connectRequests(MainWindow& window, AppDelegate& delegate);

/// Runs the entry of the status item's menu with that tag; unknown tags do nothing.
void runStatusMenuEntry(int tag, AppDelegate& delegate);

/// Does what a launcher's menu or the command line asks for.
void runDesktopAction(DesktopAction action, AppDelegate& delegate);
