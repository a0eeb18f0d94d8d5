#pragma once

#include "app/models/MenuEntry.h"

#include <QStringView>

#include <array>
#include <vector>

/// The menu of the status item.
namespace StatusMenu {

inline constexpr QStringView title{u"Pelmora"};

/// The titles in order. One that begins with the separator's mark stands for a separator.
inline constexpr QStringView separatorMark{u"##"};
inline constexpr std::array<QStringView, 8> titles{
    u"Lecture de la carte Vitale",
    u"Voir l'attestation",
    u"Imprimer l'attestation",
    u"Enregistrer l'attestation",
    u"##1",
    u"Ouvrir le dossier des attestations",
    u"##2",
    u"Quitter Pelmora",
};

/// The tags of the entries that are no separators: they count up from the first one, in the order of the titles.
enum Tag
{
    ReadTag = 10,
    ViewTag,
    PrintTag,
    SaveTag,
    OpenFolderTag,
    QuitTag
};

/// The entries, separators included.
[[nodiscard]] std::vector<MenuEntry> entries();

} // namespace StatusMenu
