#include "service/embedded/SiteMaps.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/MapJson.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

QByteArray mapNamed(const QString& name)
{
    return mapWith(u"name"_s, name);
}

QStringList namesOf(const SiteMaps& site)
{
    QStringList names;
    for (const CardMap& map : site.maps)
        names.append(map.name);
    return names;
}

} // namespace

class tst_SiteMaps : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder->filePath(u"user"_s)));
        qputenv("XDG_CONFIG_DIRS", QFile::encodeName(m_folder->filePath(u"site"_s)));
    }

    void theShippedMapsAreLoaded()
    {
        const SiteMaps site = loadCardMaps(QStringLiteral(PELMORA_STAGE_SHARE));
        QCOMPARE(site.warnings, QStringList());
        QCOMPARE(namesOf(site),
                 QStringList({u"Carte fictive de Pelmora (disposition inventée)"_s,
                              u"Carte Vitale de deuxième génération (données publiques, non vérifiées)"_s}));
        // An application identifier without a registered issuer.
        QCOMPARE(site.maps.front().application, QByteArray("\xF0PELMORA\x01"));
        QCOMPARE(site.maps.back().application, QByteArray::fromHex("D250000002") + "VITALE");
        QVERIFY(site.maps.back().wantsAllPointed());
    }

    void theUsersMapsPrecedeTheSitesAndTheShippedOnes()
    {
        QVERIFY(writeFile(path(u"share/maps/a.json"_s), mapNamed(u"fournie"_s)));
        QVERIFY(writeFile(path(u"site/MORVEL/cartes/a.json"_s), mapNamed(u"du site"_s)));
        QVERIFY(writeFile(path(u"user/MORVEL/cartes/b.json"_s), mapNamed(u"à soi, seconde"_s)));
        QVERIFY(writeFile(path(u"user/MORVEL/cartes/a.json"_s), mapNamed(u"à soi"_s)));
        const SiteMaps site = loadCardMaps(path(u"share"_s));
        QCOMPARE(site.warnings, QStringList());
        QCOMPARE(namesOf(site), QStringList({u"à soi"_s, u"à soi, seconde"_s, u"du site"_s, u"fournie"_s}));
    }

    void aFileThatIsNotAMapIsLoggedAndTheOthersLoaded()
    {
        QVERIFY(writeFile(path(u"share/maps/a.json"_s), "{}"));
        QVERIFY(writeFile(path(u"share/maps/b.json"_s), QByteArray(qsizetype{2} * 1024 * 1024, ' ')));
        QVERIFY(writeFile(path(u"share/maps/c.json"_s), mapNamed(u"fournie"_s)));
        const SiteMaps site = loadCardMaps(path(u"share"_s));
        QCOMPARE(namesOf(site), QStringList(u"fournie"_s));
        QCOMPARE(site.warnings,
                 QStringList({u"plan de carte %1 : format : 1 est attendu"_s.arg(path(u"share/maps/a.json"_s)),
                              u"plan de carte %1 : trop grand"_s.arg(path(u"share/maps/b.json"_s))}));
    }

    void otherFilesAreIgnored()
    {
        QVERIFY(writeFile(path(u"share/maps/LISEZ-MOI.txt"_s), "x"));
        QVERIFY(writeFile(path(u"share/maps/a.json~"_s), "x"));
        QVERIFY(QDir().mkpath(path(u"share/maps/dossier.json"_s)));
        QCOMPARE(::mkfifo(QFile::encodeName(path(u"share/maps/tube.json"_s)).constData(), 0600), 0);
        const SiteMaps site = loadCardMaps(path(u"share"_s));
        QCOMPARE(site.warnings, QStringList());
        QVERIFY(site.maps.empty());
    }

    void withoutAnyFolderThereIsNoMap()
    {
        const SiteMaps site = loadCardMaps(path(u"nowhere"_s));
        QCOMPARE(site.warnings, QStringList());
        QVERIFY(site.maps.empty());
    }

private:
    [[nodiscard]] QString path(const QString& name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

template class RunnableTests<tst_SiteMaps, QCoreApplication>;
#include "tst_sitemaps.moc"
