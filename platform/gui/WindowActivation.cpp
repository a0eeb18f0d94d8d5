#include "platform/gui/WindowActivation.h"

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

namespace {

// Qt 6.4 on Wayland: activating a window reads the platform window of the focus window. That is null after a dialog
// closed while it got the focus, until another window gets it.
bool activationWouldCrash()
{
    const QWindow* const focus = QGuiApplication::focusWindow();
    return focus != nullptr && focus->handle() == nullptr &&
           QGuiApplication::platformName().startsWith(QLatin1StringView("wayland"));
}

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
    // Keeps a maximised window maximised.
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    activate(window);
}
