#pragma once

#include <QScreen>
#include <QSize>
#include <QWidget>

/// As much of a size as the window's screen has room for, with a window manager's frame and title bar around it.
[[nodiscard]] inline QSize boundedToScreen(const QWidget& window, QSize size)
{
    constexpr QSize frame(16, 48); // pixels
    return size.boundedTo(window.screen()->availableSize() - frame);
}
