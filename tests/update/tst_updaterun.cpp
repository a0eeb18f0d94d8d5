#include "platform/UserDefaults.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/platform/gui/Desktop.h"
#include "tests/update/ButtonIn.h"
#include "tests/update/UpdateFixture.h"
#include "update/UpdateRun.h"
#include "update/UpdateWindow.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using Then = UpdateServer::Then;

namespace {

UpdateWindow* shownWindow()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* window = qobject_cast<UpdateWindow*>(widget);
        if (window != nullptr && window->isVisible())
            return window;
    }
    return nullptr;
}

QString shownHeadline()
{
    const UpdateWindow* window = shownWindow();
    return window == nullptr ? QString() : window->findChild<QLabel*>(u"headlineLabel"_s)->text();
}

void press(const QString& text)
{
    const UpdateWindow* window = shownWindow();
    if (QPushButton* button = window == nullptr ? nullptr : buttonIn(*window, text))
        button->click();
}

} // namespace

class tst_UpdateRun : public TestCase
{
    Q_OBJECT

private:
    const QString m_searchFailed = u"The search for updates failed:"_s;
    const QString m_available = u"La version 2.0 de Pelmora est disponible."_s;
    std::unique_ptr<UpdateFixture> m_fixture;

    [[nodiscard]] std::unique_ptr<UserDefaults> settings() const
    {
        return std::make_unique<UserDefaults>(m_fixture->settingsPath());
    }
    [[nodiscard]] std::unique_ptr<UpdateRun> run(const UpdateConfiguration& configuration) const
    {
        return std::make_unique<UpdateRun>(configuration, settings());
    }
    [[nodiscard]] std::unique_ptr<UpdateRun> run() const { return run(m_fixture->configuration()); }

    // A run that has found the update; null when it does not.
    [[nodiscard]] std::unique_ptr<UpdateRun> runWithUpdate() const
    {
        auto run = this->run();
        run->checkForUpdates();
        return QTest::qWaitFor([this] { return shownHeadline() == m_available; }) ? std::move(run) : nullptr;
    }

    [[nodiscard]] qsizetype requests() const { return m_fixture->server().requests().size(); }
    // The date of the last check, as another process reads it.
    [[nodiscard]] QDateTime lastCheck() const { return settings()->object(u"SULastCheckTime"_s).toDateTime(); }

private Q_SLOTS:
    void init() { m_fixture = std::make_unique<UpdateFixture>(); }
    void cleanup()
    {
        QTRY_COMPARE(shownWindow(), nullptr);
        m_fixture.reset();
    }

    void aCheckShowsItsWindowAtOnceAndThenItsOutcome()
    {
        const auto run = this->run();
        run->checkForUpdates();
        QCOMPARE(shownHeadline(), u"Recherche d’une mise à jour…"_s);
        QTRY_COMPARE(shownHeadline(), m_available);
        QVERIFY(!shownWindow()->isModal());
    }

    void aSecondCheckRaisesTheWindowOnly()
    {
        const auto run = runWithUpdate();
        QVERIFY(run);
        run->checkForUpdates();
        QCOMPARE(shownHeadline(), m_available);
        QCOMPARE(requests(), 1);
        press(u"Plus tard"_s);
        QTRY_COMPARE(shownWindow(), nullptr);
        run->checkForUpdates();
        QTRY_COMPARE(requests(), 2);
    }

    void withoutAFeedAMessageIsShownAndNoDateStored()
    {
        UpdateConfiguration configuration = m_fixture->configuration();
        configuration.feed.reset();
        const auto run = this->run(configuration);
        run->checkForUpdates();
        QCOMPARE(
            shownWindow()->findChild<QLabel*>(u"detailLabel"_s)->text(),
            u"Cette version de Pelmora ne sait pas où chercher ses mises à jour. Demandez à votre fournisseur s’il "
            u"en existe une plus récente."_s);
        QVERIFY(!lastCheck().isValid());
    }

    void aVerifiedPackageIsOpenedByTheDesktop()
    {
        const Desktop desktop;
        const auto run = runWithUpdate();
        QVERIFY(run);
        press(u"Télécharger"_s);
        QTRY_COMPARE(shownHeadline(), u"La version 2.0 est prête à être installée."_s);
        QCOMPARE(desktop.opened().size(), 1);
        const QString path = desktop.opened().constFirst().toLocalFile();
        QVERIFY(path.startsWith(m_fixture->folder()));
        QCOMPARE(QFileInfo(path).size(), UpdateFixture::package().size());
        press(u"OK"_s);
        QTRY_COMPARE(shownWindow(), nullptr);
        QVERIFY(QFileInfo::exists(path));
    }

    void aPackageWithoutAValidSignatureIsNotOpened()
    {
        const Desktop desktop;
        m_fixture->server().setAnswer(u"/pelmora.deb"_s,
                                      UpdateServer::ok("application/octet-stream", QByteArray(3'000'000, 'q')));
        const auto run = runWithUpdate();
        QVERIFY(run);
        press(u"Télécharger"_s);
        QTRY_COMPARE(shownHeadline(), u"Aucune mise à jour n’a pu être obtenue."_s);
        QCOMPARE(desktop.opened().size(), 0);
        QVERIFY(QDir(m_fixture->folder()).isEmpty());
    }

    void closingTheWindowOrEndingTheRunEndsADownload_data()
    {
        QTest::addColumn<bool>("isWindow");
        QTest::newRow("closing the window") << true;
        QTest::newRow("quitting") << false;
    }
    void closingTheWindowOrEndingTheRunEndsADownload()
    {
        QFETCH(const bool, isWindow);
        m_fixture->server().setAnswer(
            u"/pelmora.deb"_s, {"HTTP/1.1 200 OK\r\nContent-Length: 3000000\r\n", QByteArray(1000, 'p'), Then::Stall});
        auto run = runWithUpdate();
        QVERIFY(run);
        press(u"Télécharger"_s);
        QTRY_VERIFY(!QDir(m_fixture->folder()).isEmpty());
        if (isWindow)
            shownWindow()->close();
        else
            run.reset();
        QVERIFY(QDir(m_fixture->folder()).isEmpty());
        QCOMPARE(shownWindow(), nullptr);
    }

    void aCancelledSearchCanBeStartedAgain()
    {
        m_fixture->server().setAnswer(u"/feed"_s, {{}, {}, Then::Stall, false});
        const auto run = this->run();
        run->checkForUpdates();
        QTRY_COMPARE(requests(), 1);
        press(u"Annuler"_s);
        QCOMPARE(shownWindow(), nullptr);
        m_fixture->publish();
        run->checkForUpdates();
        QTRY_COMPARE(shownHeadline(), m_available);
        QCOMPARE(requests(), 2);
    }

    void theDateOfACheckIsStoredForAnyOutcome()
    {
        m_fixture->setFeed("Bonjour");
        const AnnouncedMessages failures(m_searchFailed);
        const QDateTime before = QDateTime::currentDateTime();
        const auto run = this->run();
        run->checkForUpdates();
        QVERIFY(lastCheck() >= before);
        QVERIFY(lastCheck() <= QDateTime::currentDateTime());
        QTRY_COMPARE(shownHeadline(), u"Aucune mise à jour n’a pu être obtenue."_s);
    }

    void closingTheWindowEndsTheRun()
    {
        const auto run = this->run();
        const QSignalSpy finished(run.get(), &UpdateRun::finished);
        run->checkForUpdates();
        QTRY_COMPARE(shownHeadline(), m_available);
        QCOMPARE(finished.size(), 0);
        press(u"Plus tard"_s);
        QCOMPARE(finished.size(), 1);
    }

    void anAutomaticCheckShowsANewVersion()
    {
        const auto run = this->run();
        const QSignalSpy finished(run.get(), &UpdateRun::finished);
        run->checkByItself();
        QVERIFY(lastCheck().isValid());
        QTRY_COMPARE(shownHeadline(), m_available);
        QCOMPARE(finished.size(), 0);
        press(u"Plus tard"_s);
        QCOMPARE(finished.size(), 1);
    }

    void anAutomaticCheckWithoutANewVersionEndsWithoutAWindow_data()
    {
        QTest::addColumn<QByteArray>("feed");
        QTest::addColumn<bool>("isFailure");
        QTest::newRow("older") << feedXml(itemXml({.version = "0.9"})) << false;
        QTest::newRow("broken") << QByteArray("Bonjour") << true;
        QTest::newRow("for a newer system")
            << feedXml(itemXml({.more = "<sparkle:minimumSystemVersion>9.9</sparkle:minimumSystemVersion>"})) << false;
    }
    void anAutomaticCheckWithoutANewVersionEndsWithoutAWindow()
    {
        QFETCH(const QByteArray, feed);
        QFETCH(const bool, isFailure);
        m_fixture->setFeed(feed);
        const AnnouncedMessages failures(m_searchFailed);
        const auto run = this->run();
        QSignalSpy finished(run.get(), &UpdateRun::finished);
        run->checkByItself();
        QVERIFY(finished.wait());
        QCOMPARE(shownWindow(), nullptr);
        QCOMPARE(failures.count() > 0, isFailure);
    }

    void anIgnoredVersionIsShownOnlyInARequestedCheck()
    {
        {
            const auto run = this->run();
            run->checkForUpdates();
            QTRY_COMPARE(shownHeadline(), m_available);
            press(u"Ignorer cette version"_s);
        }
        QCOMPARE(settings()->object(u"SUSkippedVersion"_s), u"2.0"_s);
        const auto run = this->run();
        QSignalSpy finished(run.get(), &UpdateRun::finished);
        run->checkByItself();
        QVERIFY(finished.wait());
        QCOMPARE(shownWindow(), nullptr);
        m_fixture->publish("2.1");
        run->checkByItself();
        QTRY_COMPARE(shownHeadline(), u"La version 2.1 de Pelmora est disponible."_s);
        press(u"Plus tard"_s);

        m_fixture->publish("2.0");
        const auto asked = this->run();
        asked->checkForUpdates();
        QTRY_COMPARE(shownHeadline(), m_available);
    }

    void anAutomaticSearchIsShownWhenTheUserStartsACheck()
    {
        m_fixture->server().setAnswer(u"/feed"_s, {{}, {}, Then::Stall, false});
        const auto run = this->run();
        run->checkByItself();
        QTRY_COMPARE(requests(), 1);
        QCOMPARE(shownWindow(), nullptr);
        run->checkForUpdates();
        QCOMPARE(shownHeadline(), u"Recherche d’une mise à jour…"_s);
        QCOMPARE(requests(), 1);
        press(u"Annuler"_s);
    }
};

template class RunnableTests<tst_UpdateRun, QApplication>;
#include "tst_updaterun.moc"
