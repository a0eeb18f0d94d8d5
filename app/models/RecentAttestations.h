#pragma once

#include "app/models/MenuEntry.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

class UserDefaults;

/// The list of recently saved attestations, newest first, which lives in the settings alone. Whatever else the setting
/// holds counts as no entry. Main thread only.
class RecentAttestations
{
public:
    /// So many entries at most: when the list is full, nothing is added and nothing dropped.
    static constexpr qsizetype maximumCount = 10;

    static constexpr QStringView menuTitle{u"Recents"};
    static constexpr QStringView clearTitle{u"Effacer le menu"};
    static constexpr int clearTag = 1000;

    /// The settings must outlive it.
    explicit RecentAttestations(UserDefaults& settings)
        : m_settings(settings)
    {
    }

    /// The paths that are stored.
    [[nodiscard]] QStringList paths() const;

    /// Puts a path at the head of the list. An empty one, one that is in the list already and one more than the list
    /// holds change nothing. True when the list has changed.
    bool add(const QString& path);

    /// Empties the list; the files are not touched.
    void clear();

    /// The path that a menu entry's tag stands for; nothing for a tag out of range.
    [[nodiscard]] std::optional<QString> pathAt(int tag) const;

    /// The submenu: an entry per path, tagged by its index, a separator, and the entry that clears. A list that
    /// somebody else has made too long is shown up to the maximum.
    [[nodiscard]] std::vector<MenuEntry> menu() const;

private:
    UserDefaults& m_settings;
};
