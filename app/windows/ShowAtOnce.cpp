#include "app/windows/ShowAtOnce.h"

#include <QGuiApplication>
#include <QWidget>

#include <xcb/xcb.h>

void showAtOnce(QWidget& window)
{
    window.show();
    // Qt's own function would paint the empty window too.
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* const connection = x11 != nullptr ? x11->connection() : nullptr;
    if (connection != nullptr)
        xcb_flush(connection);
}
