#pragma once

#include <QPushButton>

/// The visible button with that text; null when there is none.
inline QPushButton* buttonIn(const QWidget& window, const QString& text)
{
    for (QPushButton* button : window.findChildren<QPushButton*>()) {
        if (button->isVisible() && button->text() == text)
            return button;
    }
    return nullptr;
}
