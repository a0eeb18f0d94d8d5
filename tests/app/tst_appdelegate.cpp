#include "app/models/StatusMenu.h"
#include "app/windows/ProgressSheet.h"
#include "card/client/CardServiceKeys.h"
#include "platform/NotificationCenter.h"
#include "support/MXLog.h"
#include "support/views/MXButton.h"
#include "tests/app/Office.h"
#include "tests/common/Files.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QAction>
#include <QApplication>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const FakeScript withoutReader = FakeScript().readers({});

// Which of the seven tiles can be pressed, in the order read, view, print, save, quit, mail, settings.
QList<bool> tilesEnabled(const Office& office)
{
    const MainWindow& window = *office.window;
    QList<bool> states;
    for (const MXButton* tile : {window.readButton(), window.viewButton(), window.printButton(), window.saveButton(),
                                 window.quitButton(), window.mailButton(), window.settingsButton()})
        states.append(tile->isEnabled());
    return states;
}

const QList<bool> unbound{true, false, false, false, false, true, true};
const QList<bool> bound{true, true, true, true, true, true, true};

} // namespace

class tst_AppDelegate : public TestCase
{
    Q_OBJECT

private:
    LogCapture m_log;

private Q_SLOTS:
    void cleanup() { MXLog::defaultLogger().setLogLevel(MXLog::Notice); }

    void beforeTheBindCardActionsAreDisabledAndNothingIsRead()
    {
        const Office office(silent);
        office.start();
        QCOMPARE(tilesEnabled(office), unbound);
        QVERIFY(!office.delegate->isEnabled());
        QVERIFY(!office.delegate->isReading());
        QCOMPARE(office.summary(), u"Aucune"_s);
    }

    void afterTheStartTheWindowHasItsTitle()
    {
        const Office office(silent);
        office.start();
        QCOMPARE(office.window->windowTitle(), u"Pelmora par MORVEL"_s);
        QVERIFY(office.window->isVisible());
    }

    void theStartMakesTheFoldersOfTheReadingLibrary()
    {
        const Office office(silent);
        office.start();
        QVERIFY(QFileInfo(office.path(u"Library/Logs/santesocial"_s)).isDir());
        QVERIFY(QFileInfo(office.path(u"Library/Preferences/santesocial/sedica"_s)).isDir());
    }

    void theLogLevelIsTakenFromTheInformationDictionary_data()
    {
        QTest::addColumn<QByteArray>("entry");
        QTest::addColumn<unsigned>("level");
        QTest::newRow("absent") << QByteArray() << 5U;
        QTest::newRow("zero") << QByteArray("<key>MVDebugLevel</key><integer>0</integer>") << 0U;
        QTest::newRow("debug") << QByteArray("<key>MVDebugLevel</key><integer>6</integer>") << 6U;
    }

    void theLogLevelIsTakenFromTheInformationDictionary()
    {
        QFETCH(const QByteArray, entry);
        const QTemporaryDir resources;
        QVERIFY(Office::writeInformation(resources, entry));
        const Office office(silent, resources.path());
        office.start();
        QTEST(MXLog::defaultLogger().logLevel(), "level");
    }

    void aBindEnablesAllTiles()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        QCOMPARE(tilesEnabled(*office), bound);
        QVERIFY(!Office::alert());
    }

    void aFailedBindShowsItsErrorAndDisablesCardActions()
    {
        const Office office(withoutReader);
        office.start();
        QTRY_COMPARE(Office::alertText(),
                     std::optional(u"Aucun lecteur de carte n'a été trouvé. Vérifiez les branchements."_s));
        QCOMPARE(tilesEnabled(office), unbound);
    }

    void aMissingCardServiceGivesTheGeneralError()
    {
        const QTemporaryDir folder;
        const Office office({folder.filePath(u"card-service"_s), {}});
        office.start();
        QTRY_COMPARE(Office::alertText(), std::optional(u"L’opération n’a pas pu s’achever. (erreur Pelmora -10.)"_s));
        QCOMPARE(tilesEnabled(office), unbound);
    }

    void aBindNotificationWithoutUserInformationChangesNothing()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        NotificationCenter::defaultCenter().postNotification(BindNotification::name.toString());
        QCOMPARE(tilesEnabled(*office), bound);
        QVERIFY(!Office::alert());
    }

    void aFailedBindWithoutAnErrorDisablesCardActionsWithoutAnAlert()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        NotificationCenter::defaultCenter().postNotification(
            BindNotification::name.toString(),
            QVariantMap{{BindNotification::status.toString(), BindNotification::failure.toString()}});
        QCOMPARE(tilesEnabled(*office), unbound);
        QVERIFY(!Office::alert());
    }

    void afterTerminationNotificationsAreIgnored()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        office->delegate->applicationWillTerminate();
        NotificationCenter::defaultCenter().postNotification(
            BindNotification::name.toString(),
            QVariantMap{{BindNotification::status.toString(), BindNotification::failure.toString()}});
        QCOMPARE(tilesEnabled(*office), bound);
    }

    void aReopenShowsAHiddenWindowUnlessAnotherOneIsVisible()
    {
        const Office office(silent);
        office.start();
        office.window->hide();
        QVERIFY(!office.delegate->applicationShouldHandleReopen(true));
        QVERIFY(!office.window->isVisible());
        QVERIFY(!office.delegate->applicationShouldHandleReopen(false));
        QVERIFY(office.window->isVisible());
    }

    void theSummaryOfAReadCardIsShown()
    {
        const auto office = Office::bound(Office::simulation(Office::specimen()));
        QVERIFY(office);
        QTest::mouseClick(office->window->readButton(), Qt::LeftButton);
        QTRY_COMPARE(office->summary(), u"SPECIMEN Hélène\n285057511612381\n3 bénéficiaires"_s);
    }

    void aFailedReadKeepsThePreviousCard()
    {
        const QTemporaryDir folder;
        const QString card = folder.filePath(u"carte.xml"_s);
        QVERIFY(QFile::copy(Office::specimen(), card));
        const auto office = Office::bound(Office::simulation(card));
        QVERIFY(office);
        office->delegate->readVitale(nullptr);
        QTRY_VERIFY(!office->delegate->isReading() && office->summary() != u"Aucune"_s);
        const QString before = office->summary();

        QVERIFY(QFile::remove(card));
        office->delegate->readVitale(nullptr);
        QTRY_COMPARE(Office::alertText(), std::optional(u"La carte vitale n'est pas dans le lecteur."_s));
        QCOMPARE(office->summary(), before);
    }

    void aCancelledReadIsShownInTheWindowOnlyAndKeepsThePreviousCard()
    {
        const auto office = Office::bound(silentRead);
        QVERIFY(office);
        office->delegate->loadXMLFile(Office::specimen());
        const QString before = office->summary();
        office->delegate->readVitale(nullptr);
        QVERIFY(office->window->sheet()->isVisible());
        Q_EMIT office->window->sheet()->cancelRequested();
        QVERIFY(!office->window->sheet()->isVisible());
        QVERIFY(!office->delegate->isReading());
        QVERIFY(office->panelLine().contains(
            QRegularExpression(u"^Lecture annulée à \\d\\d:\\d\\d – carte précédente, fichier ouvert (à|le) "_s)));
        QCOMPARE(office->summary(), before);
        // The actions on the earlier card are enabled at once.
        office->delegate->viewAttestation();
        QCOMPARE(Office::alertText(), std::nullopt);
    }

    void aFileThatIsNotACardShowsAnErrorAndKeepsTheCard()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        office->delegate->loadXMLFile(Office::specimen());
        const QString before = office->summary();
        office->delegate->loadXMLFile(office->path(u"absent.xml"_s));
        QTRY_COMPARE(Office::alertText(), std::optional(u"Le fichier n’existe pas."_s));
        QCOMPARE(office->summary(), before);
    }

    void aFailedReadIsShownInThePanelUntilTheNextCard()
    {
        const QTemporaryDir folder;
        const auto office = Office::bound(Office::simulation(folder.filePath(u"absent.xml"_s)));
        QVERIFY(office);
        office->delegate->readVitale(nullptr);
        QTRY_VERIFY(Office::alert());
        QVERIFY(office->panelLine().startsWith(u"Lecture échouée à "_s));
        QCOMPARE(office->summary(), u"Aucune"_s);
        office->delegate->loadXMLFile(Office::specimen());
        QVERIFY(office->panelLine().startsWith(u"Fichier ouvert le "_s));
        Office::pressOk();
        office->delegate->readVitale(nullptr);
        QTRY_VERIFY(office->panelLine().contains(u" – carte précédente, fichier ouvert à "_s));
        QVERIFY(office->summary().startsWith(u"SPECIMEN Hélène\n"_s));
    }

    void aReadWhoseBindFailsIsShownAsFailed()
    {
        const Office office(withoutReader);
        office.start();
        QTRY_VERIFY(Office::alert());
        QCOMPARE(office.panelLine(), u"Insérez une carte, puis appuyez sur Lire."_s);
        Office::pressOk();
        office.delegate->loadXMLFile(Office::specimen());
        office.delegate->readVitale(nullptr);
        QTRY_VERIFY(office.panelLine().startsWith(u"Lecture échouée à "_s));
    }

    void theNextAcceptedRequestRemovesANotice()
    {
        const QTemporaryDir withoutContact;
        const AnnouncedMessages noInformation(u"The information dictionary cannot be read."_s);
        const Office office({}, withoutContact.path());
        office.start();
        office.delegate->loadXMLFile(Office::specimen());
        const QString before = office.panelLine();
        const auto requests = {+[](AppDelegate& delegate) { delegate.viewAttestation(); },
                               +[](AppDelegate& delegate) { delegate.loadXMLFile(Office::specimen()); },
                               +[](AppDelegate& delegate) { delegate.showHelp(); }};
        for (const auto& request : requests) {
            office.delegate->sendComment();
            QCOMPARE(office.panelLine(), before + u"\nAucune adresse n’est connue pour les suggestions."_s);
            request(*office.delegate);
            QVERIFY(!office.panelLine().contains(u'\n'));
        }
    }

    void aRefusalShowsAHiddenWindow()
    {
        const Office office(silent);
        office.start();
        office.window->hide();
        office.chooseFromStatusMenu(StatusMenu::ReadTag);
        QVERIFY(office.window->isVisible());
        QVERIFY(office.panelLine().endsWith(u"\nLe lecteur de cartes n’est pas prêt. Appuyez sur Lire."_s));
    }

    void viewingWithACardShowsItWithoutReading()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        const qsizetype reads = office->reads();
        office->delegate->loadXMLFile(Office::specimen());
        office->delegate->viewAttestation();
        QVERIFY(office->viewer()->isVisible());
        QCOMPARE(office->viewer()->windowTitle(), u"Hélène SPECIMEN"_s);
        QVERIFY(!office->delegate->isReading());
        QCOMPARE(office->reads(), reads);
    }

    void menuEntriesOfCardActionsFollowTheBind()
    {
        const Office office(withoutReader);
        office.start();
        QTRY_VERIFY(Office::alert());
        for (const QString& name : {u"readAction"_s, u"viewAction"_s, u"printAction"_s, u"saveAction"_s})
            QVERIFY2(!office.window->findChild<QAction*>(name)->isEnabled(), qPrintable(name));
        for (const QString& name : {u"folderAction"_s, u"quitAction"_s, u"settingsAction"_s, u"helpAction"_s})
            QVERIFY2(office.window->findChild<QAction*>(name)->isEnabled(), qPrintable(name));
    }

    void debugModeIsOffAfterEveryStart()
    {
        const Office office(silent);
        MVSettings::setPreferencesWithBooleanValue(office.settings, Settings::debugMode, true);
        office.start();
        QVERIFY(!MVSettings::booleanPreferencesForKey(office.settings, Settings::debugMode));
    }

    void thePanelShowsTheReadersState()
    {
        const auto office = Office::bound(FakeScript().telling("init", {u"mute_card"_s}));
        QVERIFY(office);
        QTRY_COMPARE(office->panelLine(), u"Carte illisible\u00A0: retournez-la, la puce vers le lecteur."_s);
        office->delegate->applicationWillTerminate();
    }
};

template class RunnableTests<tst_AppDelegate, QApplication>;
#include "tst_appdelegate.moc"
