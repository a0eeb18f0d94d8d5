#include "platform/gui/WindowActivation.h"

#include <QWidget>

void bringToFront(QWidget& window)
{
    // A maximised window stays so.
    window.setWindowState((window.windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    window.show();
    window.raise();
    window.activateWindow();
}
