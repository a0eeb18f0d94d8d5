#pragma once

class AppDelegate;
class MainWindow;

/// Tiles, menu entries and drops of the main window find their operations. Both must live on together. Main thread.
void connectRequests(const MainWindow& window, AppDelegate& delegate);

/// Runs the operation that an entry of the status item's menu stands for, by its tag of StatusMenu; other tags none.
void runStatusMenuEntry(int tag, AppDelegate& delegate);
