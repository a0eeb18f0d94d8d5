#pragma once

#include <QScreen>
#include <QSize>
#include <QWidget>

/// The size limited to the window's screen without a window frame.
[[nodiscard]] inline QSize boundedToScreen(const QWidget& window, QSize size)
{
    constexpr QSize frame(16, 48); // pixels
    return size.boundedTo(window.screen()->availableSize() - frame);
}
