#pragma once

#include "service/embedded/CardMap.h"

/// The card maps in use, in the order in which they are tried, and a sentence for each file that holds none.
struct SiteMaps
{
    std::vector<CardMap> maps;
    QStringList warnings;
};

/// The site's own maps, MORVEL/cartes/*.json in each of the XDG configuration folders, the user's first, then those
/// that are shipped in the resource folder: maps/*.json. In each folder by name.
[[nodiscard]] SiteMaps loadCardMaps(const QString& resourceFolder);
