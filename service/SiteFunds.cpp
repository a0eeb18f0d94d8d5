#include "service/SiteFunds.h"

#include <QStandardPaths>

#include <ranges>

using namespace Qt::StringLiterals;

SiteFunds loadFunds(const QString& resourceFolder)
{
    QStringList files = QStandardPaths::locateAll(QStandardPaths::GenericConfigLocation, u"MORVEL/caisses.csv"_s);
    files.append(resourceFolder + "/funds/caisses.csv"_L1);

    SiteFunds funds;
    // The user's file last: later entries replace earlier ones.
    for (const QString& file : std::views::reverse(files))
        funds.warnings += funds.table.addFile(file);
    return funds;
}
