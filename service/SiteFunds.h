#pragma once

#include "service/FundTable.h"

/// The fund table in use, and a sentence for each of its lines that was skipped.
struct SiteFunds
{
    FundTable table;
    QStringList warnings;
};

/// The table shipped in the resource folder, then the site's own ones over it: MORVEL/caisses.csv in each of the XDG
/// configuration folders, the user's last.
[[nodiscard]] SiteFunds loadFunds(const QString& resourceFolder);
