#pragma once

#include "app/models/MenuEntry.h"

#include <QStringList>

#include <optional>
#include <vector>

class UserDefaults;

/// The recently saved attestations, newest first, in the settings. Invalid values there are ignored. Main thread only.
class RecentAttestations
{
public:
    /// A full list stays as it is.
    static constexpr qsizetype maximumCount = 10;

    static constexpr QStringView menuTitle{u"Recents"};
    static constexpr QStringView clearTitle{u"Effacer le menu"};
    static constexpr int clearTag = 1000;

    /// The settings must outlive it.
    explicit RecentAttestations(UserDefaults& settings)
        : m_settings(settings)
    {
    }

    [[nodiscard]] QStringList paths() const;

    /// Adds a path at the front, unless it is empty, in the list already, the list is full, or the user wants none.
    /// True when it was added.
    bool add(const QString& path);

    /// Empties the list; the files stay.
    void clear();

    /// The path of a menu entry's tag; absent for other tags.
    [[nodiscard]] std::optional<QString> pathAt(int tag) const;

    /// The submenu: at most maximumCount paths tagged by their index, a separator, and the entry that clears.
    [[nodiscard]] std::vector<MenuEntry> menu() const;

private:
    UserDefaults& m_settings;
};
