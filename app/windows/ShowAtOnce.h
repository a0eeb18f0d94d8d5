#pragma once

class QWidget;

/// Shows the window, and sends that to the display before anything else is done. Events are not handled. Main thread.
void showAtOnce(QWidget& window);
