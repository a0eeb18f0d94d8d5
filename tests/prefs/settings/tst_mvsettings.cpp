#include "platform/UserDefaults.h"
#include "prefs/settings/MVSettings.h"
#include "prefs/settings/StandardPreferences.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_MVSettings : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UserDefaults> m_store;

    QString file() const { return m_folder->filePath(u"Pelmora.conf"_s); }
    // The program quits and is started again.
    void restart()
    {
        m_store.reset();
        m_store = std::make_unique<UserDefaults>(file());
        setStandardPreferences(*m_store);
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        restart();
    }

    void cleanup() { m_store.reset(); }

    void aFreshAccountReadsTheDefaults()
    {
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_store, Settings::lvitMode), 0);
        QCOMPARE(MVSettings::stringPreferencesForKey(*m_store, {Settings::lvitMode.key}), u"Auto"_s);
        QCOMPARE(MVSettings::booleanPreferencesForKey(*m_store, Settings::statusItemMenu), true);
        QCOMPARE(MVSettings::booleanPreferencesForKey(*m_store, Settings::showRightLabelPrintOption), false);
        QCOMPARE(MVSettings::stringPreferencesForKey(*m_store, Settings::attestationsFolder),
                 QDir::homePath() + u"/Documents/Attestations Pelmora"_s);
        QVERIFY(!MVSettings::arrayPreferenceForKey(*m_store, Settings::recentsAttestation).isValid());
        QVERIFY(!MVSettings::stringPreferencesForKey(*m_store, Settings::lastPrinter));
        QCOMPARE(MVSettings::booleanPreferencesForKey(*m_store, Settings::printWithoutAsking), false);
        QCOMPARE(MVSettings::booleanPreferencesForKey(*m_store, Settings::debugMode), false);
    }

    void aChosenModeWinsAfterARestart()
    {
        MVSettings::setPreferencesWithIntegerValue(*m_store, Settings::lvitMode, 2);
        restart();
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_store, Settings::lvitMode), 2);
    }

    void theDebugModeIsOffAfterARestart()
    {
        MVSettings::setPreferencesWithBooleanValue(*m_store, Settings::debugMode, true);
        QVERIFY(MVSettings::booleanPreferencesForKey(*m_store, Settings::debugMode));
        restart();
        QVERIFY(!MVSettings::booleanPreferencesForKey(*m_store, Settings::debugMode));
    }

    void removingARegisteredSettingShowsItsDefaultAgain()
    {
        MVSettings::setPreferencesWithBooleanValue(*m_store, Settings::statusItemMenu, false);
        MVSettings::setPreferenceWithArray(*m_store, Settings::recentsAttestation, {u"/a.pdf"_s});
        MVSettings::removePreferences(*m_store,
                                      {Settings::statusItemMenu.key, Settings::recentsAttestation.key, u"Absent"});
        QVERIFY(MVSettings::booleanPreferencesForKey(*m_store, Settings::statusItemMenu));
        QVERIFY(!MVSettings::arrayPreferenceForKey(*m_store, Settings::recentsAttestation).isValid());
    }

    void removingNothingForcesTheStoreToTheDisk()
    {
        MVSettings::setPreferencesWithStringValue(*m_store, Settings::attestationsFolder, u"/x"_s);
        // The file is read directly, because opening a second store makes the first one write its values.
        QVERIFY(!contentOf(file()).contains("/x"));
        MVSettings::removePreferences(*m_store, {});
        QVERIFY(contentOf(file()).contains("/x"));
        QCOMPARE(MVSettings::stringPreferencesForKey(*m_store, Settings::attestationsFolder), u"/x"_s);
    }

    void everyTypeReadsAgainWhatWasSet()
    {
        const QDateTime date(QDate(2026, 11, 21), QTime(9, 0));
        MVSettings::setPreferencesWithBooleanValue(*m_store, {u"B"}, true);
        MVSettings::setPreferencesWithStringValue(*m_store, {u"S"}, u"Été, 2ᵉ étage"_s);
        MVSettings::setPreferencesWithIntegerValue(*m_store, {u"I"}, std::numeric_limits<qint64>::min());
        MVSettings::setPreferenceWithDateValue(*m_store, {u"D"}, date);
        MVSettings::setPreferenceWithArray(*m_store, {u"A"}, {u"/a, b.pdf"_s});
        for (int run = 0; run < 2; ++run) {
            QCOMPARE(MVSettings::booleanPreferencesForKey(*m_store, {u"B"}), true);
            QCOMPARE(MVSettings::stringPreferencesForKey(*m_store, {u"S"}), u"Été, 2ᵉ étage"_s);
            QCOMPARE(MVSettings::integerPreferencesForKey(*m_store, {u"I"}), std::numeric_limits<qint64>::min());
            QCOMPARE(MVSettings::datePreferenceForKey(*m_store, {u"D"}).toDateTime(), date);
            QCOMPARE(MVSettings::arrayPreferenceForKey(*m_store, {u"A"}).toList(), QVariantList{u"/a, b.pdf"_s});
            restart();
        }
    }

    void anAbsentKeyReadsAsTheEmptyValueOfItsType()
    {
        QCOMPARE(MVSettings::booleanPreferencesForKey(*m_store, {u"Absent"}), false);
        QVERIFY(!MVSettings::stringPreferencesForKey(*m_store, {u"Absent"}));
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_store, {u"Absent"}), 0);
        QVERIFY(!MVSettings::datePreferenceForKey(*m_store, {u"Absent"}).isValid());
        QVERIFY(!MVSettings::arrayPreferenceForKey(*m_store, {u"Absent"}).isValid());
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
        m_store.reset();
        QFile written(file());
        QVERIFY(written.open(QIODevice::WriteOnly));
        written.write("[General]\nKey=" + value + "\n");
        written.close();
        restart();
        QTEST(MVSettings::booleanPreferencesForKey(*m_store, {u"Key"}), "boolean");
        QTEST(MVSettings::integerPreferencesForKey(*m_store, {u"Key"}), "integer");
    }

    void aBooleanThatWasJustSetIsANumberToo()
    {
        MVSettings::setPreferencesWithBooleanValue(*m_store, {u"Key"}, true);
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_store, {u"Key"}), 1);
        MVSettings::setPreferencesWithBooleanValue(*m_store, {u"Key"}, false);
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_store, {u"Key"}), 0);
    }

    void valuesOfAnotherTypeAreHandedOutByTheObjectGetters()
    {
        MVSettings::setPreferencesWithStringValue(*m_store, {u"Key"}, u"text"_s);
        QCOMPARE(MVSettings::arrayPreferenceForKey(*m_store, {u"Key"}), QVariant(u"text"_s));
        QCOMPARE(MVSettings::datePreferenceForKey(*m_store, {u"Key"}), QVariant(u"text"_s));
        MVSettings::setPreferenceWithArray(*m_store, {u"Key"}, {1, 2});
        QVERIFY(!MVSettings::stringPreferencesForKey(*m_store, {u"Key"}));
    }
};

template class RunnableTests<tst_MVSettings, QCoreApplication>;
#include "tst_mvsettings.moc"
