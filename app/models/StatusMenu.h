#pragma once

#include "app/models/MenuEntry.h"

#include <QStringView>

#include <array>
#include <vector>

namespace StatusMenu {

inline constexpr QStringView title{u"Pelmora"};

/// Titles in order; one with the separator's mark is a separator.
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

/// Tags of the entries without separators, in the order of the titles.
enum Tag
{
    ReadTag = 10,
    ViewTag,
    PrintTag,
    SaveTag,
    OpenFolderTag,
    QuitTag
};

/// The entries with separators.
[[nodiscard]] std::vector<MenuEntry> entries();

} // namespace StatusMenu
