#include "platform/UserDefaults.h"
#include "prefs/settings/MVSettings.h"
#include "prefs/settings/StandardPreferences.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class tst_MVSettings : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;

    QString file() const { return m_folder->filePath(u"Pelmora.conf"_s); }
    // The program quits and is started again.
    void restart() const
    {
        MVSettings::setStore(nullptr);
        MVSettings::setStore(std::make_unique<UserDefaults>(file()));
        setStandardPreferences();
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        restart();
    }

    void cleanup() { MVSettings::setStore(nullptr); }

    void aFreshAccountReadsTheDefaults()
    {
        QCOMPARE(MVSettings::integerPreferencesForKey(SettingsKey::lvitMode), 0);
        QCOMPARE(MVSettings::stringPreferencesForKey(SettingsKey::lvitMode), u"Auto"_s);
        QCOMPARE(MVSettings::booleanPreferencesForKey(SettingsKey::statusItemMenu), true);
        QCOMPARE(MVSettings::booleanPreferencesForKey(SettingsKey::showRightLabelPrintOption), false);
        QCOMPARE(MVSettings::stringPreferencesForKey(SettingsKey::attestationsFolder),
                 QDir::homePath() + u"/Documents/Attestations Pelmora"_s);
        QVERIFY(!MVSettings::arrayPreferenceForKey(SettingsKey::recentsAttestation).isValid());
        QCOMPARE(MVSettings::booleanPreferencesForKey(SettingsKey::debugMode), false);
    }

    void aChosenModeWinsAfterARestart()
    {
        MVSettings::setPreferencesWithIntegerValue(SettingsKey::lvitMode, 2);
        restart();
        QCOMPARE(MVSettings::integerPreferencesForKey(SettingsKey::lvitMode), 2);
    }

    void theDebugModeIsOffAfterARestart()
    {
        MVSettings::setPreferencesWithBooleanValue(SettingsKey::debugMode, true);
        QVERIFY(MVSettings::booleanPreferencesForKey(SettingsKey::debugMode));
        restart();
        QVERIFY(!MVSettings::booleanPreferencesForKey(SettingsKey::debugMode));
    }

    void removingARegisteredSettingShowsItsDefaultAgain()
    {
        MVSettings::setPreferencesWithBooleanValue(SettingsKey::statusItemMenu, false);
        MVSettings::setPreferenceWithArray(SettingsKey::recentsAttestation, {u"/a.pdf"_s});
        MVSettings::removePreferences({SettingsKey::statusItemMenu, SettingsKey::recentsAttestation, u"Absent"});
        QVERIFY(MVSettings::booleanPreferencesForKey(SettingsKey::statusItemMenu));
        QVERIFY(!MVSettings::arrayPreferenceForKey(SettingsKey::recentsAttestation).isValid());
    }

    void removingNothingForcesTheStoreToTheDisk()
    {
        MVSettings::setPreferencesWithStringValue(SettingsKey::attestationsFolder, u"/x"_s);
        // The bytes of the file: a second store would have the first one written.
        QVERIFY(!contentOf(file()).contains("/x"));
        MVSettings::removePreferences({});
        QVERIFY(contentOf(file()).contains("/x"));
        QCOMPARE(MVSettings::stringPreferencesForKey(SettingsKey::attestationsFolder), u"/x"_s);
    }

    void everyTypeReadsAgainWhatWasSet()
    {
        const QDateTime date(QDate(2026, 11, 21), QTime(9, 0));
        MVSettings::setPreferencesWithBooleanValue(u"B", true);
        MVSettings::setPreferencesWithStringValue(u"S", u"Été, 2ᵉ étage"_s);
        MVSettings::setPreferencesWithIntegerValue(u"I", std::numeric_limits<qint64>::min());
        MVSettings::setPreferenceWithDateValue(u"D", date);
        MVSettings::setPreferenceWithArray(u"A", {u"/a, b.pdf"_s});
        for (int run = 0; run < 2; ++run) {
            QCOMPARE(MVSettings::booleanPreferencesForKey(u"B"), true);
            QCOMPARE(MVSettings::stringPreferencesForKey(u"S"), u"Été, 2ᵉ étage"_s);
            QCOMPARE(MVSettings::integerPreferencesForKey(u"I"), std::numeric_limits<qint64>::min());
            QCOMPARE(MVSettings::datePreferenceForKey(u"D").toDateTime(), date);
            QCOMPARE(MVSettings::arrayPreferenceForKey(u"A").toList(), QVariantList{u"/a, b.pdf"_s});
            restart();
        }
    }

    void anAbsentKeyReadsAsTheEmptyValueOfItsType()
    {
        QCOMPARE(MVSettings::booleanPreferencesForKey(u"Absent"), false);
        QVERIFY(!MVSettings::stringPreferencesForKey(u"Absent"));
        QCOMPARE(MVSettings::integerPreferencesForKey(u"Absent"), 0);
        QVERIFY(!MVSettings::datePreferenceForKey(u"Absent").isValid());
        QVERIFY(!MVSettings::arrayPreferenceForKey(u"Absent").isValid());
    }

    void aFileWrittenByHandIsReadByType_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<bool>("boolean");
        QTest::addColumn<qint64>("integer");
        QTest::newRow("true") << QByteArray("true") << true << qint64{0};
        QTest::newRow("YES") << QByteArray("YES") << true << qint64{0};
        QTest::newRow("NO") << QByteArray("NO") << false << qint64{0};
        QTest::newRow("false") << QByteArray("false") << false << qint64{0};
        QTest::newRow("1") << QByteArray("1") << true << qint64{1};
        QTest::newRow("0") << QByteArray("0") << false << qint64{0};
        QTest::newRow("2") << QByteArray("2") << true << qint64{2};
        QTest::newRow("yes after a blank") << QByteArray("\" yes\"") << true << qint64{0};
        QTest::newRow("2 after a blank") << QByteArray("\" 2\"") << true << qint64{2};
        QTest::newRow("list") << QByteArray("1, 2") << false << qint64{0};
        QTest::newRow("empty") << QByteArray("") << false << qint64{0};
    }

    void aFileWrittenByHandIsReadByType()
    {
        QFETCH(const QByteArray, value);
        MVSettings::setStore(nullptr);
        QFile written(file());
        QVERIFY(written.open(QIODevice::WriteOnly));
        written.write("[General]\nKey=" + value + "\n");
        written.close();
        restart();
        QTEST(MVSettings::booleanPreferencesForKey(u"Key"), "boolean");
        QTEST(MVSettings::integerPreferencesForKey(u"Key"), "integer");
    }

    void aBooleanThatWasJustSetIsANumberToo()
    {
        MVSettings::setPreferencesWithBooleanValue(u"Key", true);
        QCOMPARE(MVSettings::integerPreferencesForKey(u"Key"), 1);
        MVSettings::setPreferencesWithBooleanValue(u"Key", false);
        QCOMPARE(MVSettings::integerPreferencesForKey(u"Key"), 0);
    }

    void valuesOfAnotherTypeAreHandedOutByTheObjectGetters()
    {
        MVSettings::setPreferencesWithStringValue(u"Key", u"text"_s);
        QCOMPARE(MVSettings::arrayPreferenceForKey(u"Key"), QVariant(u"text"_s));
        QCOMPARE(MVSettings::datePreferenceForKey(u"Key"), QVariant(u"text"_s));
        MVSettings::setPreferenceWithArray(u"Key", {1, 2});
        QVERIFY(!MVSettings::stringPreferencesForKey(u"Key"));
    }
};

QTEST_GUILESS_MAIN(tst_MVSettings)
#include "tst_mvsettings.moc"
