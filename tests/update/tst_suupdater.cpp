#include "platform/UserDefaults.h"
#include "tests/common/TestCase.h"
#include "tests/update/UpdateFixture.h"
#include "update/SUUpdater.h"
#include "update/UpdateWindow.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
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
    if (window == nullptr)
        return;
    for (QPushButton* button : window->findChildren<QPushButton*>()) {
        if (button->isVisible() && button->text() == text)
            return button->click();
    }
}

} // namespace

/// Stands in for the desktop's way to open files.
class Desktop final : public QObject
{
    Q_OBJECT

public:
    Desktop() { QDesktopServices::setUrlHandler(u"file"_s, this, "open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler(u"file"_s); }
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    [[nodiscard]] const QList<QUrl>& opened() const { return m_opened; }

public Q_SLOTS:
    void open(const QUrl& address) { m_opened.append(address); }

private:
    QList<QUrl> m_opened;
};

class tst_SUUpdater : public TestCase
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
    [[nodiscard]] std::unique_ptr<SUUpdater> updater(const UpdateConfiguration& configuration) const
    {
        return std::make_unique<SUUpdater>(configuration, settings());
    }
    [[nodiscard]] std::unique_ptr<SUUpdater> updater() const { return updater(m_fixture->configuration()); }

    // One that looks by itself, at once and then as often as it is told.
    [[nodiscard]] UpdateConfiguration automatic(std::chrono::milliseconds interval) const
    {
        UpdateConfiguration configuration = m_fixture->configuration();
        configuration.automaticChecks = true;
        configuration.limits.firstCheck = 0ms;
        configuration.limits.interval = interval;
        return configuration;
    }

    [[nodiscard]] qsizetype requests() const { return m_fixture->server().requests().size(); }

    // Where one is told to look that is to keep quiet, and what the server is asked there until another, which may look
    // and has come later, has looked three times.
    [[nodiscard]] QUrl quietAddress() const { return m_fixture->server().address(u"/quiet"_s); }
    [[nodiscard]] std::optional<qsizetype> requestsMeanwhile(const QByteArray& path) const
    {
        m_fixture->setFeed("Bonjour");
        const AnnouncedMessages failures(m_searchFailed);
        const SUUpdater other(automatic(1ms), std::make_unique<UserDefaults>(m_fixture->folder() + u".conf"_s));
        const auto requestsFor = [this](const QByteArray& wanted) {
            return std::ranges::count_if(m_fixture->server().requests(), [&wanted](const QByteArray& head) {
                return head.startsWith("GET " + wanted + ' ');
            });
        };
        if (!QTest::qWaitFor([&] { return requestsFor("/feed") >= 3; }))
            return std::nullopt;
        return requestsFor(path);
    }

private Q_SLOTS:
    void init() { m_fixture = std::make_unique<UpdateFixture>(); }
    void cleanup()
    {
        QTRY_COMPARE(shownWindow(), nullptr);
        m_fixture.reset();
    }

    void aCheckShowsItsWindowAtOnceAndThenItsOutcome()
    {
        const auto updater = this->updater();
        updater->checkForUpdates(nullptr);
        QCOMPARE(shownHeadline(), u"Recherche d’une mise à jour…"_s);
        QTRY_COMPARE(shownHeadline(), m_available);
        QVERIFY(!shownWindow()->isModal());
    }

    void aSecondCheckOnlyBringsTheWindowToTheFront()
    {
        const auto updater = this->updater();
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(shownHeadline(), m_available);
        updater->checkForUpdates(this);
        QCOMPARE(shownHeadline(), m_available);
        QCOMPARE(requests(), 1);
        press(u"Plus tard"_s);
        QTRY_COMPARE(shownWindow(), nullptr);
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(requests(), 2);
    }

    void aCheckIsDatedWhateverComesOfIt()
    {
        const auto updater = this->updater();
        QVERIFY(!updater->lastUpdateCheckDate());
        m_fixture->setFeed("Bonjour");
        const QDateTime before = QDateTime::currentDateTime();
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(shownHeadline(), u"Aucune mise à jour n’a pu être obtenue."_s);
        QVERIFY(updater->lastUpdateCheckDate() >= before);
        QVERIFY(updater->lastUpdateCheckDate() <= QDateTime::currentDateTime());
        QCOMPARE(this->updater()->lastUpdateCheckDate(), updater->lastUpdateCheckDate());
        QCOMPARE(settings()->object(u"SULastCheckTime"_s).toDateTime(), updater->lastUpdateCheckDate());
    }

    void withoutAFeedAKindMessageIsShownAndNoDateKept()
    {
        UpdateConfiguration configuration = m_fixture->configuration();
        configuration.feed.reset();
        const auto updater = this->updater(configuration);
        updater->checkForUpdates(nullptr);
        QCOMPARE(
            shownWindow()->findChild<QLabel*>(u"detailLabel"_s)->text(),
            u"Cette version de Pelmora ne sait pas où chercher ses mises à jour. Demandez à votre fournisseur s’il "
            u"en existe une plus récente."_s);
        QVERIFY(!updater->lastUpdateCheckDate());
    }

    void aDateThatIsNoneIsAbsent()
    {
        settings()->setObject(u"SULastCheckTime"_s, u"hier"_s);
        QVERIFY(!updater()->lastUpdateCheckDate());
        settings()->setObject(u"SULastCheckTime"_s, QDateTime());
        QVERIFY(!updater()->lastUpdateCheckDate());
        const QDateTime date(QDate(2024, 3, 5), QTime(9, 7));
        settings()->setObject(u"SULastCheckTime"_s, date);
        QCOMPARE(updater()->lastUpdateCheckDate(), date);
    }

    void aVerifiedPackageIsHandedToTheDesktop()
    {
        const Desktop desktop;
        const auto updater = this->updater();
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(shownHeadline(), m_available);
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

    void aPackageThatIsNotTheMakersIsNotHandedOver()
    {
        const Desktop desktop;
        m_fixture->server().setAnswer(u"/pelmora.deb"_s,
                                      UpdateServer::ok("application/octet-stream", QByteArray(3'000'000, 'q')));
        const auto updater = this->updater();
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(shownHeadline(), m_available);
        press(u"Télécharger"_s);
        QTRY_COMPARE(shownHeadline(), u"Aucune mise à jour n’a pu être obtenue."_s);
        QCOMPARE(desktop.opened().size(), 0);
        QVERIFY(QDir(m_fixture->folder()).isEmpty());
    }

    void closingTheWindowEndsADownload()
    {
        m_fixture->server().setAnswer(
            u"/pelmora.deb"_s, {"HTTP/1.1 200 OK\r\nContent-Length: 3000000\r\n", QByteArray(1000, 'p'), Then::Stall});
        const auto updater = this->updater();
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(shownHeadline(), m_available);
        press(u"Télécharger"_s);
        QTRY_VERIFY(!QDir(m_fixture->folder()).isEmpty());
        shownWindow()->close();
        QVERIFY(QDir(m_fixture->folder()).isEmpty());
    }

    void quittingEndsADownload()
    {
        m_fixture->server().setAnswer(
            u"/pelmora.deb"_s, {"HTTP/1.1 200 OK\r\nContent-Length: 3000000\r\n", QByteArray(1000, 'p'), Then::Stall});
        auto updater = this->updater();
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(shownHeadline(), m_available);
        press(u"Télécharger"_s);
        QTRY_VERIFY(!QDir(m_fixture->folder()).isEmpty());
        updater.reset();
        QVERIFY(QDir(m_fixture->folder()).isEmpty());
        QCOMPARE(shownWindow(), nullptr);
    }

    void aSearchThatWasCancelledCanBeBegunAgain()
    {
        m_fixture->server().setAnswer(u"/feed"_s, {{}, {}, Then::Stall, false});
        const auto updater = this->updater();
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(requests(), 1);
        press(u"Annuler"_s);
        QCOMPARE(shownWindow(), nullptr);
        m_fixture->publish();
        updater->checkForUpdates(nullptr);
        QTRY_COMPARE(shownHeadline(), m_available);
        QCOMPARE(requests(), 2);
    }

    void withoutPermissionNothingIsLookedFor()
    {
        UpdateConfiguration configuration = automatic(0ms);
        configuration.automaticChecks = false;
        configuration.feed = quietAddress();
        const auto updater = this->updater(configuration);
        QCOMPARE(requestsMeanwhile("/quiet"), 0);
        QVERIFY(!updater->lastUpdateCheckDate());
    }

    void aPackageManagersProgramDoesNotLookByItself()
    {
        UpdateConfiguration configuration = automatic(0ms);
        configuration.isPackaged = true;
        configuration.feed = quietAddress();
        const auto updater = this->updater(configuration);
        QCOMPARE(requestsMeanwhile("/quiet"), 0);
        QCOMPARE(shownWindow(), nullptr);
    }

    void withPermissionANewVersionShowsByItself()
    {
        const auto updater = this->updater(automatic(24h));
        QTRY_COMPARE(shownHeadline(), m_available);
        QVERIFY(updater->lastUpdateCheckDate().has_value());
    }

    void withPermissionOnlyNewsAreShown_data()
    {
        QTest::addColumn<QByteArray>("feed");
        QTest::addColumn<bool>("isFailure");
        QTest::newRow("older") << feedXml(itemXml({.version = "0.9"})) << false;
        QTest::newRow("broken") << QByteArray("Bonjour") << true;
        QTest::newRow("for a newer system")
            << feedXml(itemXml({.more = "<sparkle:minimumSystemVersion>9.9</sparkle:minimumSystemVersion>"})) << false;
    }
    void withPermissionOnlyNewsAreShown()
    {
        QFETCH(const QByteArray, feed);
        QFETCH(const bool, isFailure);
        m_fixture->setFeed(feed);
        const AnnouncedMessages failures(m_searchFailed);
        // Each look shows that the one before it has ended.
        const auto updater = this->updater(automatic(1ms));
        QTRY_VERIFY(requests() >= 3);
        QCOMPARE(shownWindow(), nullptr);
        QCOMPARE(failures.count() > 0, isFailure);
    }

    void itLooksOnceADayAtMost()
    {
        settings()->setObject(u"SULastCheckTime"_s, QDateTime::currentDateTime().addSecs(-23 * 3600));
        UpdateConfiguration configuration = automatic(24h);
        configuration.feed = quietAddress();
        const auto updater = this->updater(configuration);
        QCOMPARE(requestsMeanwhile("/quiet"), 0);
    }

    void itLooksAgainAfterADayOrWhenTheClockWasWrong_data()
    {
        QTest::addColumn<int>("hours");
        QTest::newRow("yesterday") << -25;
        QTest::newRow("to come") << 48;
    }
    void itLooksAgainAfterADayOrWhenTheClockWasWrong()
    {
        QFETCH(const int, hours);
        settings()->setObject(u"SULastCheckTime"_s, QDateTime::currentDateTime().addSecs(hours * 3600));
        const auto updater = this->updater(automatic(24h));
        QTRY_COMPARE(requests(), 1);
    }

    void anIgnoredVersionShowsOnlyToWhoAsks()
    {
        {
            const auto updater = this->updater();
            updater->checkForUpdates(nullptr);
            QTRY_COMPARE(shownHeadline(), m_available);
            press(u"Ignorer cette version"_s);
        }
        QCOMPARE(settings()->object(u"SUSkippedVersion"_s), u"2.0"_s);
        const auto updater = this->updater(automatic(1ms));
        QTRY_VERIFY(requests() >= 4);
        QCOMPARE(shownWindow(), nullptr);
        m_fixture->publish("2.1");
        QTRY_COMPARE(shownHeadline(), u"La version 2.1 de Pelmora est disponible."_s);
        press(u"Plus tard"_s);

        m_fixture->publish("2.0");
        const auto asked = this->updater();
        asked->checkForUpdates(nullptr);
        QTRY_COMPARE(shownHeadline(), m_available);
    }

    void aSearchByItselfIsShownToWhoAsksMeanwhile()
    {
        m_fixture->server().setAnswer(u"/feed"_s, {{}, {}, Then::Stall, false});
        const auto updater = this->updater(automatic(24h));
        QTRY_COMPARE(requests(), 1);
        QCOMPARE(shownWindow(), nullptr);
        updater->checkForUpdates(nullptr);
        QCOMPARE(shownHeadline(), u"Recherche d’une mise à jour…"_s);
        QCOMPARE(requests(), 1);
        press(u"Annuler"_s);
    }
};

QTEST_MAIN(tst_SUUpdater)
#include "tst_suupdater.moc"
