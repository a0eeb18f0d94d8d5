#pragma once

class QWidget;

/// Shows the program's name and version over the window. Main thread only.
void showAboutBox(QWidget* window);
