#pragma once

#include <QString>

/// An entry of a menu.
struct MenuEntry
{
    /// The title for users. A QAction needs actionText().
    QString title;
    int tag = 0;
    bool enabled = true;
    bool isSeparator = false;

    [[nodiscard]] static MenuEntry separator();

    /// The title for a QAction, with "&" and tabs escaped.
    [[nodiscard]] QString actionText() const;

    friend bool operator==(const MenuEntry&, const MenuEntry&) = default;
};
