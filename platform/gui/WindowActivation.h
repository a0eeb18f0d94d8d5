#pragma once

class QWidget;

/// Shows a top-level window that is hidden, iconified or behind others, and gives it the keyboard focus.
void bringToFront(QWidget& window);
