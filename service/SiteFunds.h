#pragma once

#include "service/FundTable.h"

/// The fund table, and a sentence for each skipped line.
struct SiteFunds
{
    FundTable table;
    QStringList warnings;
};

/// Loads the table in the resource folder, then those of the site: MORVEL/caisses.csv in each XDG configuration folder,
/// the user's last. Later entries replace earlier ones.
[[nodiscard]] SiteFunds loadFunds(const QString& resourceFolder);
