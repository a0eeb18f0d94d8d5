#pragma once

class AppDelegate;
class MainWindow;

/// Connects tiles, menu entries and drops of the main window with their operations. Main thread.
void connectRequests(MainWindow& window, AppDelegate& delegate);

/// Runs the entry of the status item's menu with that tag; unknown tags do nothing.
void runStatusMenuEntry(int tag, AppDelegate& delegate);
