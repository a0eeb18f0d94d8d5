#include "app/models/RecentAttestations.h"

#include "prefs/settings/MVSettings.h"

#include <QFileInfo>

namespace {

// The non-empty texts in the stored value.
QStringList textsIn(const QVariant& stored)
{
    QStringList texts;
    if (stored.typeId() != QMetaType::QVariantList && stored.typeId() != QMetaType::QStringList)
        return texts;
    for (const QVariant& item : stored.toList()) {
        if (item.typeId() == QMetaType::QString && !item.toString().isEmpty())
            texts.append(item.toString());
    }
    return texts;
}

} // namespace

QStringList RecentAttestations::paths() const
{
    return textsIn(MVSettings::arrayPreferenceForKey(m_settings, Settings::recentsAttestation));
}

bool RecentAttestations::add(const QString& path)
{
    if (path.isEmpty() || MVSettings::booleanPreferencesForKey(m_settings, Settings::forgetRecents))
        return false;
    const QStringList stored = paths();
    if (stored.size() >= maximumCount || stored.contains(path))
        return false;
    QVariantList changed{path};
    for (const QString& other : stored)
        changed.append(other);
    MVSettings::setPreferenceWithArray(m_settings, Settings::recentsAttestation, changed);
    return true;
}

void RecentAttestations::clear()
{
    MVSettings::removePreferences(m_settings, {Settings::recentsAttestation.key});
}

std::optional<QString> RecentAttestations::pathAt(int tag) const
{
    const QStringList stored = paths();
    if (tag < 0 || tag >= stored.size())
        return std::nullopt;
    return stored.at(tag);
}

std::vector<MenuEntry> RecentAttestations::menu() const
{
    const QStringList shown = paths().mid(0, maximumCount);
    std::vector<MenuEntry> entries;
    int tag = 0;
    for (const QString& path : shown)
        entries.push_back({.title = QFileInfo(path).fileName(), .tag = tag++});
    if (!shown.isEmpty())
        entries.push_back(MenuEntry::separator());
    entries.push_back({.title = clearTitle.toString(), .tag = clearTag, .enabled = !shown.isEmpty()});
    return entries;
}
