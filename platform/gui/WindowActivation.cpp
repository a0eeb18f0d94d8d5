#include "platform/gui/WindowActivation.h"

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

namespace {

// Qt 6.4 reads the focus window's platform window when a window is activated on Wayland. A dialog that closes while it
// gets the keyboard stays the focus window without one, until the compositor gives the keyboard to another window.
bool activationWouldCrash()
{
    const QWindow* const focus = QGuiApplication::focusWindow();
    return focus != nullptr && focus->handle() == nullptr &&
           QGuiApplication::platformName().startsWith(QLatin1StringView("wayland"));
}

// Now, or once Qt can.
void activate(QWidget& window)
{
    if (activationWouldCrash()) {
        QObject::connect(
            qGuiApp, &QGuiApplication::focusWindowChanged, &window, [&window] { activate(window); },
            Qt::SingleShotConnection);
        return;
    }
    window.activateWindow();
}

} // namespace

void bringToFront(QWidget& window)
{
    // A maximised window stays so.
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    activate(window);
}
