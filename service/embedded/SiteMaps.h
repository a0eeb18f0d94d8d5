#pragma once

#include "service/embedded/CardMap.h"

/// The card maps in the order of their use, and a sentence for each invalid file.
struct SiteMaps
{
    std::vector<CardMap> maps;
    QStringList warnings;
};

/// Loads the site's maps, MORVEL/cartes/*.json in each XDG configuration folder, the user's first, then maps/*.json in
/// the resource folder. Maps of a folder are sorted by name.
[[nodiscard]] SiteMaps loadCardMaps(const QString& resourceFolder);

/// The content of a map's data file. The error is in French.
[[nodiscard]] std::expected<QByteArray, QString> readCardMapFile(const QString& path);
