#pragma once

class QWidget;

/// Brings a top-level window back from wherever it is (hidden, iconified, behind others) and gives it the keyboard.
void bringToFront(QWidget& window);
