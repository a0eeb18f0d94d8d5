#include "platform/UserDefaults.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/update/client/FakeUpdateProgram.h"
#include "update/client/SUUpdater.h"

#include <QCoreApplication>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class tst_SUUpdater : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FakeUpdateProgram> m_program;

    [[nodiscard]] QString settingsPath() const { return m_folder->filePath(u"Pelmora.conf"_s); }
    [[nodiscard]] std::unique_ptr<UserDefaults> settings() const
    {
        return std::make_unique<UserDefaults>(settingsPath());
    }
    [[nodiscard]] std::unique_ptr<SUUpdater> updater(const UpdateConfiguration& configuration = {}) const
    {
        return std::make_unique<SUUpdater>(configuration, m_program->path(), settings());
    }

    // A configuration with automatic checks: one at once, then at the given interval.
    [[nodiscard]] static UpdateConfiguration automatic(std::chrono::milliseconds interval)
    {
        UpdateConfiguration configuration;
        configuration.feed = QUrl(u"https://updates.example/feed.xml"_s);
        configuration.automaticChecks = true;
        configuration.limits.firstCheck = 0ms;
        configuration.limits.interval = interval;
        return configuration;
    }

    // Whether the updater of the test starts nothing. Meanwhile a second updater, with automatic checks, runs until its
    // own program has been started three times.
    [[nodiscard]] bool isQuietMeanwhile() const
    {
        const FakeUpdateProgram program;
        SUUpdater other(automatic(1ms), program.path(),
                        std::make_unique<UserDefaults>(m_folder->filePath(u"other.conf"_s)));
        if (!program.stopAtNextRequest())
            return false;
        for (qsizetype count = 1; count <= 3; ++count) {
            const auto isStarted = [&] { return program.notes().filter(u"start"_s).size() >= count; };
            if (!QTest::qWaitFor(isStarted))
                return false;
            other.checkForUpdates(nullptr);
        }
        return m_program->notes().isEmpty();
    }

    // Stores a date as another process would: the settings file, which may have been read already, is replaced.
    [[nodiscard]] bool storeFromOutside(const QVariant& date) const
    {
        const QString other = m_folder->filePath(u"outside.conf"_s);
        UserDefaults(other).setObject(u"SULastCheckTime"_s, date);
        QFile::remove(settingsPath());
        return QFile::rename(other, settingsPath());
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_program = std::make_unique<FakeUpdateProgram>();
        QVERIFY(m_program->isMade());
    }

    void aCheckStartsTheProgramAndASecondOneRaisesItsWindow()
    {
        const auto updater = this->updater();
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(m_program->notes(), QStringList{u"start"_s});
        updater->checkForUpdates(this);
        QTRY_COMPARE(m_program->notes(), (QStringList{u"start"_s, u"show"_s}));
    }

    void thereIsSomethingToAskForWithAFeedOrAPackageManager()
    {
        UpdateConfiguration configuration = automatic(24h);
        QVERIFY(updater(configuration)->canCheckForUpdates());
        configuration.feed.reset();
        QVERIFY(!updater(configuration)->canCheckForUpdates());
        configuration.isPackaged = true;
        QVERIFY(updater(configuration)->canCheckForUpdates());
    }

    void theProgramEndsWithTheUpdater()
    {
        auto updater = this->updater();
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(m_program->notes(), QStringList{u"start"_s});
        updater.reset();
        QTRY_COMPARE(m_program->notes(), (QStringList{u"start"_s, u"end"_s}));
    }

    // At the next check, the updater may or may not have noticed that the program has ended.
    void onceTheProgramHasEndedTheNextCheckStartsItAgain()
    {
        const auto updater = this->updater();
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(m_program->notes(), QStringList{u"start"_s});
        QVERIFY(m_program->stopAtNextRequest());
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(m_program->notes(), (QStringList{u"start"_s, u"end"_s}));
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(m_program->notes(), (QStringList{u"start"_s, u"end"_s, u"start"_s}));
    }

    void aMissingProgramIsReportedInARequestedCheck()
    {
        QVERIFY(QFile::remove(m_program->path()));
        const auto updater = this->updater();
        QList<Error> errors;
        connect(updater.get(), &SUUpdater::failed, this, [&errors](const Error& error) { errors.append(error); });
        QTest::ignoreMessage(QtWarningMsg, "The program for updates cannot be started: No such file or directory");
        updater->checkForUpdates(nullptr);
        QCOMPARE(errors.size(), 1);
        QCOMPARE(errors.constFirst().localizedDescription(), u"Aucune mise à jour n’a pu être obtenue."_s);
        QCOMPARE(errors.constFirst().detail(),
                 u"Le programme des mises à jour n’a pas pu être lancé\u00A0: l’installation de Pelmora "
                 "est incomplète. Il faut le réinstaller."_s);
    }

    void aMissingProgramIsNotReportedInAnAutomaticCheck()
    {
        QVERIFY(QFile::remove(m_program->path()));
        QTest::ignoreMessage(QtWarningMsg, "The program for updates cannot be started: No such file or directory");
        const auto updater = this->updater(automatic(24h));
        const QSignalSpy failed(updater.get(), &SUUpdater::failed);
        QVERIFY(isQuietMeanwhile());
        QCOMPARE(failed.size(), 0);
    }

    void theDateIsTheOneStoredByTheProgram()
    {
        const auto updater = this->updater();
        QVERIFY(!updater->lastUpdateCheckDate());
        const QDateTime date(QDate(2024, 3, 5), QTime(9, 7));
        QVERIFY(storeFromOutside(date));
        QCOMPARE(updater->lastUpdateCheckDate(), date);
    }

    void aStoredValueThatIsNotADateIsAbsent()
    {
        const auto updater = this->updater();
        QVERIFY(storeFromOutside(u"hier"_s));
        QVERIFY(!updater->lastUpdateCheckDate());
        QVERIFY(storeFromOutside(QDateTime()));
        QVERIFY(!updater->lastUpdateCheckDate());
    }

    void withPermissionAnAutomaticCheckRuns()
    {
        const auto updater = this->updater(automatic(24h));
        QTRY_COMPARE(m_program->notes(), QStringList{u"start --by-itself"_s});
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(m_program->notes(), (QStringList{u"start --by-itself"_s, u"show"_s}));
    }

    void withoutPermissionNoAutomaticCheckRuns_data()
    {
        QTest::addColumn<UpdateConfiguration>("configuration");
        UpdateConfiguration configuration = automatic(0ms);
        configuration.automaticChecks = false;
        QTest::newRow("switched off") << configuration;
        configuration = automatic(0ms);
        configuration.isPackaged = true;
        QTest::newRow("a package manager's program") << configuration;
        configuration = automatic(0ms);
        configuration.feed.reset();
        QTest::newRow("without a feed") << configuration;
    }
    void withoutPermissionNoAutomaticCheckRuns()
    {
        QFETCH(const UpdateConfiguration, configuration);
        const auto updater = this->updater(configuration);
        QVERIFY(isQuietMeanwhile());
    }

    void automaticChecksRunOnceADayAtMost()
    {
        QVERIFY(storeFromOutside(QDateTime::currentDateTime().addSecs(-23 * 3600)));
        const auto updater = this->updater(automatic(24h));
        QVERIFY(isQuietMeanwhile());
    }

    void aRecentManualCheckReplacesTheAutomaticOne()
    {
        UpdateConfiguration configuration = automatic(24h);
        configuration.limits.firstCheck = 1ms;
        const auto updater = this->updater(configuration);
        QVERIFY(storeFromOutside(QDateTime::currentDateTime()));
        QVERIFY(isQuietMeanwhile());
    }

    void anAutomaticCheckRunsAfterADayOrWhenTheDateIsInTheFuture_data()
    {
        QTest::addColumn<int>("hours");
        QTest::newRow("yesterday") << -25;
        QTest::newRow("to come") << 48;
    }
    void anAutomaticCheckRunsAfterADayOrWhenTheDateIsInTheFuture()
    {
        QFETCH(const int, hours);
        QVERIFY(storeFromOutside(QDateTime::currentDateTime().addSecs(hours * 3600)));
        const auto updater = this->updater(automatic(24h));
        QTRY_COMPARE(m_program->notes(), QStringList{u"start --by-itself"_s});
    }
};

template class RunnableTests<tst_SUUpdater, QCoreApplication>;
#include "tst_suupdater.moc"
