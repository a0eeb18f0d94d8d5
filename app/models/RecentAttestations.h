#pragma once

#include "app/models/MenuEntry.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

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

    /// The paths that are stored.
    [[nodiscard]] static QStringList paths();

    /// Puts a path at the head of the list. An empty one, one that is in the list already and one more than the list
    /// holds change nothing. True when the list has changed.
    static bool add(const QString& path);

    /// Empties the list; the files are not touched.
    static void clear();

    /// The path that a menu entry's tag stands for; nothing for a tag out of range.
    [[nodiscard]] static std::optional<QString> pathAt(int tag);

    /// The submenu: an entry per path, tagged by its index, a separator, and the entry that clears. A list that
    /// somebody else has made too long is shown up to the maximum.
    [[nodiscard]] static std::vector<MenuEntry> menu();
};
