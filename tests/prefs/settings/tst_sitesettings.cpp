#include "platform/UserDefaults.h"
#include "prefs/settings/MVSettings.h"
#include "prefs/settings/SiteSettings.h"
#include "prefs/settings/StandardPreferences.h"
#include "tests/common/Files.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

class tst_SiteSettings : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UserDefaults> m_store;
    LogCapture m_log;

    QString siteFile() const { return m_folder->filePath(u"etc/MORVEL/Pelmora.conf"_s); }
    bool writeSite(const QByteArray& text) const { return writeFile(siteFile(), text); }
    SiteSettings read(const QByteArray& text) const
    {
        return writeSite(text) ? SiteSettings::read(siteFile()) : SiteSettings();
    }

    // The program is started, with the site's file and the user's.
    void start()
    {
        m_store.reset();
        m_store = std::make_unique<UserDefaults>(UserDefaults::standardFilePath());
        useSiteSettings(*m_store);
        setStandardPreferences(*m_store);
    }

    QString folder() const
    {
        return MVSettings::stringPreferencesForKey(*m_store, Settings::attestationsFolder).value_or(u"none"_s);
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        qputenv("HOME", QFile::encodeName(m_folder->path()));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder->filePath(u"config"_s)));
        const QString site = m_folder->filePath(u"etc"_s);
        qputenv("XDG_CONFIG_DIRS", QFile::encodeName(m_folder->filePath(u"absent"_s) + u':' + site));
        QVERIFY(QDir().mkpath(site + u"/MORVEL"_s));
        m_log.clear();
    }
    void cleanup() { m_store.reset(); }

    void withoutTheFileNothingChanges()
    {
        start();
        QCOMPARE(folder(), m_folder->filePath(u"Documents/Attestations Pelmora"_s));
        QVERIFY(!m_store->isLocked(u"MVAttestationsFolder"_s));
        QCOMPARE(m_log.lines(MXLog::Warning), QStringList());
    }

    void aDefaultOfTheSiteIsUsedUntilTheUserChooses()
    {
        QVERIFY(writeSite("MVAttestationsFolder=~/Cabinet\n[General]\nMVStatusItemMenu=no\n"));
        start();
        QCOMPARE(folder(), m_folder->filePath(u"Cabinet"_s));
        QVERIFY(!MVSettings::booleanPreferencesForKey(*m_store, Settings::statusItemMenu));
        QVERIFY(!m_store->isLocked(u"MVAttestationsFolder"_s));
        MVSettings::setPreferencesWithStringValue(*m_store, Settings::attestationsFolder, u"/srv/a"_s);
        start();
        QCOMPARE(folder(), u"/srv/a"_s);
        MVSettings::removePreferences(*m_store, {Settings::attestationsFolder.key});
        QCOMPARE(folder(), m_folder->filePath(u"Cabinet"_s));
    }

    void aLockedValueWinsAndTheUsersOwnIsKept()
    {
        start();
        MVSettings::setPreferencesWithIntegerValue(*m_store, Settings::lvitMode, 2);
        QVERIFY(writeSite("[Verrouillé]\nMVLVitMode=1\nMVDebugMode=true\n"));
        start();
        QVERIFY(m_store->isLocked(u"MVLVitMode"_s));
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_store, Settings::lvitMode), 1);
        // The locked value is also used for a setting that the program resets at its start.
        QVERIFY(MVSettings::booleanPreferencesForKey(*m_store, Settings::debugMode));
        MVSettings::setPreferencesWithIntegerValue(*m_store, Settings::lvitMode, 0);
        MVSettings::removePreferences(*m_store, {Settings::lvitMode.key});
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_store, Settings::lvitMode), 1);
        QVERIFY(QFile::remove(siteFile()));
        start();
        QCOMPARE(MVSettings::integerPreferencesForKey(*m_store, Settings::lvitMode), 2);
    }

    void nothingOfTheSiteIsWrittenToTheUsersFile()
    {
        QVERIFY(writeSite("MVLastPrinter=accueil\n[Verrouillé]\nMVAttestationsFolder=/srv/attestations\n"));
        start();
        MVSettings::removePreferences(*m_store, {});
        const QByteArray written = contentOf(UserDefaults::standardFilePath());
        QVERIFY(written.contains("MVDebugMode"));
        QVERIFY(!written.contains("accueil") && !written.contains("/srv"));
        QVERIFY(contentOf(siteFile()).startsWith("MVLastPrinter"));
    }

    void theLockedSectionIsKnownHoweverItsAccentIsWritten_data()
    {
        QTest::addColumn<QByteArray>("section");
        QTest::newRow("UTF-8") << QByteArray("[Verrouill\xC3\xA9]");
        QTest::newRow("two characters") << QByteArray("[Verrouille\xCC\x81]");
        QTest::newRow("percent") << QByteArray("[Verrouill%C3%A9]");
        QTest::newRow("as QSettings writes it") << QByteArray("[Verrouill%E9]");
        QTest::newRow("ISO Latin 1") << QByteArray("[Verrouill\xE9]");
        QTest::newRow("no accent, capitals") << QByteArray("[VERROUILLE]");
        QTest::newRow("after a byte order mark") << QByteArray("\xEF\xBB\xBF[Verrouill\xC3\xA9]");
        QTest::newRow("lines of another system") << QByteArray("[Verrouill\xC3\xA9]\r");
    }
    void theLockedSectionIsKnownHoweverItsAccentIsWritten()
    {
        QFETCH(const QByteArray, section);
        const SiteSettings site = read(section + "\nMVAttestationsFolder=/srv/\xC3\x89t\xC3\xA9\n");
        QCOMPARE(site.problems, QStringList());
        QCOMPARE(site.values.defaults, QVariantMap());
        QCOMPARE(site.values.locked.value(u"MVAttestationsFolder"_s).toString().trimmed(), u"/srv/Été"_s);
    }

    void everyTypeIsRead()
    {
        const SiteSettings site = read("MVLVitMode=Auto\nMVForgetAfterMinutes=10\nMVForgetOnLock=YES\n"
                                       "MVForgetRecents=0\nMVLastPrinter=\"a, b\"\n");
        QCOMPARE(site.problems, QStringList());
        QCOMPARE(site.values.defaults, (QVariantMap{{u"MVLVitMode"_s, u"Auto"_s},
                                                    {u"MVForgetAfterMinutes"_s, qint64{10}},
                                                    {u"MVForgetOnLock"_s, true},
                                                    {u"MVForgetRecents"_s, false},
                                                    {u"MVLastPrinter"_s, u"a, b"_s}}));
    }

    void aValueOfTheWrongTypeIsNamedAndNotUsed_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("mode") << QByteArray("MVLVitMode=3");
        QTest::newRow("negative") << QByteArray("MVForgetAfterMinutes=-1");
        QTest::newRow("minutes in words") << QByteArray("MVForgetAfterMinutes=dix");
        QTest::newRow("boolean") << QByteArray("MVForgetOnLock=oui");
        QTest::newRow("empty") << QByteArray("MVForgetOnLock=");
        QTest::newRow("two texts") << QByteArray("MVLastPrinter=a, b");
        QTest::newRow("not UTF-8") << QByteArray("MVAttestationsFolder=/srv/\xC9t\xE9");
        QTest::newRow("relative folder") << QByteArray("MVAttestationsFolder=Attestations");
        QTest::newRow("each user's own") << QByteArray("MVRecentsAttestation=/a.pdf");
    }
    void aValueOfTheWrongTypeIsNamedAndNotUsed()
    {
        QFETCH(const QByteArray, line);
        const SiteSettings site = read("[Verrouillé]\n" + line);
        QCOMPARE(site.values.locked, QVariantMap());
        QCOMPARE(site.problems, QStringList{u"the value of Verrouillé/%1 is not one that a site can set"_s.arg(
                                    QString::fromUtf8(line).section(u'=', 0, 0))});
    }

    void aSettingThatDoesNotExistIsNamed()
    {
        const SiteSettings site = read("MVlvitmode=1\n[Autre]\nMVLVitMode=1\n[Verrouillé]\nSecret=DUPONT\n"
                                       "MVRecentsAttestation\\1\\value=/a.pdf\n");
        QCOMPARE(site.problems,
                 (QStringList{u"there is no setting Autre/MVLVitMode"_s, u"there is no setting MVlvitmode"_s,
                              u"there is no setting Verrouillé/MVRecentsAttestation/1/value"_s,
                              u"there is no setting Verrouillé/Secret"_s}));
        QVERIFY(site.values.locked.isEmpty() && site.values.defaults.isEmpty());
    }

    void theLogNamesKeysOnceAndNeverValues()
    {
        QByteArray text("[Verrouillé]\nMVForgetOnLock=DUPONT\n");
        for (int number = 10; number < 40; ++number)
            text += "Cle" + QByteArray::number(number) + "=DUPONT\n";
        QVERIFY(writeSite(text));
        start();
        QCOMPARE(m_log.lines(MXLog::Warning).size(), 21);
        const QString all = m_log.lines(MXLog::Warning).join(u'\n');
        QVERIFY(all.contains(u"Cle10"_s) && all.contains(u"11 further problems"_s));
        QVERIFY(!all.contains(u"DUPONT"_s));
    }

    void whatIsNoPlainFileIsNotWaitedFor()
    {
        QCOMPARE(mkfifo(QFile::encodeName(siteFile()).constData(), 0600), 0);
        const SiteSettings site = SiteSettings::read(siteFile());
        QCOMPARE(site.problems.size(), 1);
        QVERIFY(site.problems.first().startsWith(u"it cannot be read"_s));
    }

    void aFileOfGarbageLocksNothing()
    {
        const SiteSettings site = read(QByteArray(1000, '\xFF') + QByteArray(10, '\0') + "[[[==\nKey");
        QVERIFY(!site.problems.isEmpty());
        QVERIFY(site.values.locked.isEmpty() && site.values.defaults.isEmpty());
        QCOMPARE(read(QByteArray(300'000, '\n')).problems, QStringList{u"it is not read, because it is too large"_s});
    }
};

template class RunnableTests<tst_SiteSettings, QCoreApplication>;
#include "tst_sitesettings.moc"
