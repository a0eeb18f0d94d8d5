#pragma once

class QWidget;

/// Shows over the window what this program is, and its version. Main thread only.
void showAboutBox(QWidget* window);
