#include "platform/Bundle.h"
#include "platform/PropertyList.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "update/client/UpdateConfiguration.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_UpdateConfiguration : public TestCase
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    [[nodiscard]] UpdateConfiguration configurationOf(const QVariantMap& information) const
    {
        QFile file(m_folder.filePath(u"Info.plist"_s));
        if (file.open(QIODevice::WriteOnly))
            file.write(writePropertyList(information).value_or(QByteArray()));
        file.close();
        return UpdateConfiguration::fromBundle(Bundle(m_folder.path()));
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }
    void allValuesComeFromTheInformationDictionary()
    {
        const UpdateConfiguration configuration = configurationOf({{u"SUFeedURL"_s, u"https://a.example/feed.xml"_s},
                                                                   {u"SUPublicEDKey"_s, u"a2V5"_s},
                                                                   {u"SUEnableAutomaticChecks"_s, true},
                                                                   {u"CFBundleVersion"_s, u"215"_s},
                                                                   {u"CFBundleShortVersionString"_s, u"1.2"_s}});
        QCOMPARE(configuration.feed, QUrl(u"https://a.example/feed.xml"_s));
        QCOMPARE(configuration.publicKey, QByteArray("a2V5"));
        QVERIFY(configuration.automaticChecks);
        QCOMPARE(configuration.version, u"215"_s);
        QCOMPARE(configuration.shortVersion, u"1.2"_s);
        QVERIFY(configuration.systemVersion.startsWith(u"2."));
        QVERIFY(configuration.folder.endsWith("/MORVEL/Pelmora/updates"_L1));
        QVERIFY(!configuration.isPackaged);
    }

    void missingValuesSwitchUpdatesOff()
    {
        const UpdateConfiguration configuration = configurationOf({{u"CFBundleVersion"_s, u"1"_s}});
        QVERIFY(!configuration.feed);
        QVERIFY(configuration.publicKey.isEmpty());
        QVERIFY(!configuration.automaticChecks);
    }

    void automaticChecksNeedATrueBoolean()
    {
        for (const QVariant& value : {QVariant(false), QVariant(u"YES"_s), QVariant(u"true"_s), QVariant(1LL)})
            QVERIFY(!configurationOf({{u"SUEnableAutomaticChecks"_s, value}}).automaticChecks);
    }

    void aFeedThatIsNotAnAddressIsStillAFeed()
    {
        const UpdateConfiguration configuration = configurationOf({{u"SUFeedURL"_s, u"https://["_s}});
        QVERIFY(configuration.feed);
        QVERIFY(!configuration.feed->isValid());
    }

    void theFoldersOfThePackageManagerAreRecognised_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<bool>("isPackageManagers");
        QTest::newRow("distribution") << u"/usr/bin"_s << true;
        QTest::newRow("by hand") << u"/usr/local/bin"_s << false;
        QTest::newRow("of its own") << u"/opt/pelmora/bin"_s << false;
        QTest::newRow("home") << u"/home/accueil/Pelmora.app/bin"_s << false;
        QTest::newRow("sandbox") << u"/app/bin"_s << true;
        QTest::newRow("store") << u"/nix/store/abc-pelmora/bin"_s << true;
        QTest::newRow("look-alike") << u"/usr2/bin"_s << false;
        QTest::newRow("the folder itself") << u"/usr"_s << true;
    }
    void theFoldersOfThePackageManagerAreRecognised()
    {
        QFETCH(const QString, folder);
        QTEST(isPackageManagersFolder(folder), "isPackageManagers");
    }
};

template class RunnableTests<tst_UpdateConfiguration, QCoreApplication>;
#include "tst_updateconfiguration.moc"
