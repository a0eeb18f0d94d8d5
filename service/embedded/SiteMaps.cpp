#include "service/embedded/SiteMaps.h"

#include <QDir>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestMap = qint64{1024} * 1024;

} // namespace

std::expected<QByteArray, QString> readCardMapFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::unexpected(u"illisible (%1)"_s.arg(file.errorString()));
    QByteArray json = file.read(largestMap + 1);
    if (file.error() != QFileDevice::NoError)
        return std::unexpected(u"illisible (%1)"_s.arg(file.errorString()));
    if (json.size() > largestMap)
        return std::unexpected(u"trop grand"_s);
    return json;
}

SiteMaps loadCardMaps(const QString& resourceFolder)
{
    QStringList folders = QStandardPaths::locateAll(QStandardPaths::GenericConfigLocation, u"MORVEL/cartes"_s,
                                                    QStandardPaths::LocateDirectory);
    folders.append(resourceFolder + "/maps"_L1);
    SiteMaps site;
    for (const QString& folder : folders) {
        // Plain files only: reading a pipe would wait.
        const QDir directory(folder, u"*.json"_s, QDir::Name, QDir::Files);
        for (const QString& name : directory.entryList()) {
            const QString path = directory.filePath(name);
            const std::expected<QByteArray, QString> json = readCardMapFile(path);
            std::expected<CardMap, QString> map = json ? parseCardMap(*json) : std::unexpected(json.error());
            if (map)
                site.maps.push_back(*std::move(map));
            else
                site.warnings.append(u"plan de carte %1 : %2"_s.arg(path, map.error()));
        }
    }
    return site;
}
