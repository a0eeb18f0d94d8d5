#pragma once

#include <QString>

/// An entry of a menu, as a model: what it says and what it stands for.
struct MenuEntry
{
    /// The title as people read it. For a QAction use actionText().
    QString title;
    int tag = 0;
    bool enabled = true;
    bool isSeparator = false;

    [[nodiscard]] static MenuEntry separator();

    /// The title as the text of a QAction, in which "&" and tabs have a meaning of their own.
    [[nodiscard]] QString actionText() const;

    friend bool operator==(const MenuEntry&, const MenuEntry&) = default;
};
