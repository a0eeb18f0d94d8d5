#include "app/models/RecentAttestations.h"
#include "app/models/StatusMenu.h"
#include "app/windows/ProgressSheet.h"
#include "card/CardKeys.h"
#include "card/client/CardServiceKeys.h"
#include "platform/NotificationCenter.h"
#include "platform/files/FileWorker.h"
#include "support/MXLog.h"
#include "support/views/MVSimpleOpaqueView.h"
#include "support/views/MXButton.h"
#include "tests/app/Office.h"
#include "tests/card/client/LogCapture.h"
#include "tests/common/Files.h"
#include "tests/common/TestCase.h"
#include "tests/fakes/FakeService.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <future>

using namespace Qt::StringLiterals;

namespace {

const FakeScript silent = FakeScript().doing("any", "silent");
const FakeScript withoutReader = FakeScript().readers({});

ServiceCommand simulation(const QString& card)
{
    return {QStringLiteral(PELMORA_STAGE "/libexec/pelmora/com.morvel.lvit"), {u"--simulate"_s, card}};
}

QString specimen()
{
    return QStringLiteral(PELMORA_STAGE_SHARE "/specimen.xml");
}

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

QString summary(const Office& office)
{
    return office.window->vitaleInfoTextField()->text();
}

// What the window says under the summary.
QString panelLine(const Office& office)
{
    return office.window->findChild<QLabel*>(u"panelLineField"_s)->text();
}

void pressOk()
{
    if (QMessageBox* box = Office::alert())
        QTest::mouseClick(box->buttons().constFirst(), Qt::LeftButton);
}

// Asks for the attestation to be saved, and waits until the user has been told.
bool isSaved(const Office& office)
{
    const QSignalSpy ended(&FileWorker::shared(), &FileWorker::ended);
    office.delegate->saveAttestation();
    return QTest::qWaitFor([&ended] { return ended.count() == 1; });
}

QStringList recents(const Office& office)
{
    QStringList titles;
    for (const QAction* action : office.window->recentsMenuItem()->menu()->actions())
        titles.append(action->isSeparator() ? u"-"_s : action->text());
    return titles;
}

// Something that the user asks for.
using Request = void (*)(AppDelegate&);

// An office whose card service is bound.
std::unique_ptr<Office> boundOffice(const ServiceCommand& service)
{
    auto office = std::make_unique<Office>(service);
    office->start();
    const bool isBound = QTest::qWaitFor([&office] { return office->delegate->isEnabled(); });
    return isBound ? std::move(office) : nullptr;
}

} // namespace

class tst_AppDelegate : public TestCase
{
    Q_OBJECT

private:
    FakeService m_fake;
    LogCapture m_log;

private Q_SLOTS:
    void cleanup() { MXLog::defaultLogger().setLogLevel(MXLog::Notice); }

    void beforeTheBindCardActionsAreOffAndReadingIsNot()
    {
        const Office office(m_fake.command(silent));
        office.start();
        QCOMPARE(tilesEnabled(office), unbound);
        QVERIFY(!office.delegate->isEnabled());
        QVERIFY(!office.delegate->isReading());
        QCOMPARE(summary(office), u"Aucune"_s);
    }

    void theWindowHasItsTitleOnceTheStartIsOver()
    {
        const Office office(m_fake.command(silent));
        office.start();
        QCOMPARE(office.window->windowTitle(), u"Pelmora par MORVEL"_s);
        QVERIFY(office.window->isVisible());
    }

    void theStartMakesTheFoldersOfTheReadingLibrary()
    {
        const Office office(m_fake.command(silent));
        office.start();
        QVERIFY(QFileInfo(office.path(u"Library/Logs/santesocial"_s)).isDir());
        QVERIFY(QFileInfo(office.path(u"Library/Preferences/santesocial/sedica"_s)).isDir());
    }

    void aFileInTheFoldersPlaceDoesNotStopTheStart()
    {
        const Office office(m_fake.command(silent));
        QVERIFY(QDir(office.path(u"."_s)).mkpath(u"Library/Logs"_s));
        QVERIFY(writeFile(office.path(u"Library/Logs/santesocial"_s), "x"));
        office.start();
        QCOMPARE(office.window->windowTitle(), u"Pelmora par MORVEL"_s);
        QVERIFY(QFileInfo(office.path(u"Library/Logs/santesocial"_s)).isFile());
    }

    void theLogLevelOfTheInformationDictionaryIsApplied_data()
    {
        QTest::addColumn<QByteArray>("entry");
        QTest::addColumn<unsigned>("level");
        QTest::newRow("absent") << QByteArray() << 5U;
        QTest::newRow("zero") << QByteArray("<key>MVDebugLevel</key><integer>0</integer>") << 0U;
        QTest::newRow("debug") << QByteArray("<key>MVDebugLevel</key><integer>6</integer>") << 6U;
    }

    void theLogLevelOfTheInformationDictionaryIsApplied()
    {
        QFETCH(const QByteArray, entry);
        const QTemporaryDir resources;
        QVERIFY(writeFile(resources.filePath(u"Info.plist"_s),
                          "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>" + entry +
                              "</dict></plist>"));
        const Office office(m_fake.command(silent), resources.path());
        office.start();
        QTEST(MXLog::defaultLogger().logLevel(), "level");
    }

    void aBindSwitchesEverythingOn()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        QCOMPARE(tilesEnabled(*office), bound);
        QVERIFY(!Office::alert());
    }

    void aFailedBindSaysWhyAndSwitchesCardActionsOff()
    {
        const Office office(m_fake.command(withoutReader));
        office.start();
        QTRY_COMPARE(Office::alertText(),
                     std::optional(u"Aucun lecteur de carte n'a été trouvé. Vérifiez les branchements."_s));
        QCOMPARE(tilesEnabled(office), unbound);
    }

    void aCardServiceThatIsNotThereIsTheGeneralError()
    {
        const QTemporaryDir folder;
        const Office office({folder.filePath(u"card-service"_s), {}});
        office.start();
        QTRY_COMPARE(Office::alertText(), std::optional(u"L’opération n’a pas pu s’achever. (erreur Pelmora -10.)"_s));
        QCOMPARE(tilesEnabled(office), unbound);
    }

    void aBindNotificationWithoutUserInformationChangesNothing()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        NotificationCenter::defaultCenter().postNotification(BindNotification::name.toString());
        QCOMPARE(tilesEnabled(*office), bound);
        QVERIFY(!Office::alert());
    }

    void aFailureWithoutAnErrorSwitchesOffWithoutAnAlert()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        NotificationCenter::defaultCenter().postNotification(
            BindNotification::name.toString(),
            QVariantMap{{BindNotification::status.toString(), BindNotification::failure.toString()}});
        QCOMPARE(tilesEnabled(*office), unbound);
        QVERIFY(!Office::alert());
    }

    void afterTheEndNothingIsObserved()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        office->delegate->applicationWillTerminate();
        NotificationCenter::defaultCenter().postNotification(
            BindNotification::name.toString(),
            QVariantMap{{BindNotification::status.toString(), BindNotification::failure.toString()}});
        QCOMPARE(tilesEnabled(*office), bound);
    }

    void aReopenBringsAHiddenWindowBack()
    {
        const Office office(m_fake.command(silent));
        office.start();
        office.window->hide();
        QVERIFY(!office.delegate->applicationShouldHandleReopen(false));
        QVERIFY(office.window->isVisible());
    }

    void aReopenWithAVisibleWindowDoesNothing()
    {
        const Office office(m_fake.command(silent));
        office.start();
        office.window->hide();
        QVERIFY(!office.delegate->applicationShouldHandleReopen(true));
        QVERIFY(!office.window->isVisible());
    }

    void aCardThatIsReadIsSummedUp()
    {
        const auto office = boundOffice(simulation(specimen()));
        QVERIFY(office);
        QTest::mouseClick(office->window->readButton(), Qt::LeftButton);
        QTRY_COMPARE(summary(*office), u"SPECIMEN Hélène\n285057511612381\n3 bénéficiaires"_s);
    }

    void aFailedReadKeepsTheCardThatWasThere()
    {
        const QTemporaryDir folder;
        const QString card = folder.filePath(u"carte.xml"_s);
        QVERIFY(QFile::copy(specimen(), card));
        const auto office = boundOffice(simulation(card));
        QVERIFY(office);
        office->delegate->readVitale(nullptr);
        QTRY_VERIFY(!office->delegate->isReading() && summary(*office) != u"Aucune"_s);
        const QString before = summary(*office);

        QVERIFY(QFile::remove(card));
        office->delegate->readVitale(nullptr);
        QTRY_COMPARE(Office::alertText(), std::optional(u"La carte vitale n'est pas dans le lecteur."_s));
        QCOMPARE(summary(*office), before);
    }

    void aCancelledReadIsToldInTheWindowAloneAndKeepsTheCardThatWasThere()
    {
        const auto office = boundOffice(m_fake.command(FakeScript().doing("vitale_read", "silent")));
        QVERIFY(office);
        office->delegate->loadXMLFile(specimen());
        const QString before = summary(*office);
        office->delegate->readVitale(nullptr);
        QVERIFY(office->window->sheet()->isVisible());
        Q_EMIT office->window->sheet()->cancelRequested();
        QVERIFY(!office->window->sheet()->isVisible());
        QVERIFY(!office->delegate->isReading());
        QVERIFY(panelLine(*office).contains(
            QRegularExpression(u"^Lecture annulée à \\d\\d:\\d\\d – carte précédente, fichier ouvert (à|le) "_s)));
        QCOMPARE(summary(*office), before);
        // What was read before can be worked on at once.
        office->delegate->viewAttestation();
        QCOMPARE(Office::alertText(), std::nullopt);
    }

    void aFileIsACardWithoutANamedFund()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        office->delegate->loadXMLFile(specimen());
        QVERIFY(summary(*office).startsWith(u"SPECIMEN Hélène\n"_s));
        office->delegate->saveAttestation();
        QTRY_COMPARE(Office::alertText(), std::optional(u"L'attestation a bien été enregistrée."_s));
        QVERIFY(QFileInfo(office->attestations() + u"/SPECIMEN Hélène.pdf"_s).isFile());
    }

    void aFileThatIsNoCardIsSaidSoAndTheCardStays()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        office->delegate->loadXMLFile(specimen());
        const QString before = summary(*office);
        office->delegate->loadXMLFile(office->path(u"absent.xml"_s));
        QTRY_COMPARE(Office::alertText(), std::optional(u"Le fichier n’existe pas."_s));
        QCOMPARE(summary(*office), before);
    }

    void savingTwiceIsOneRecentFile()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        QCOMPARE(recents(*office), QStringList{u"Effacer le menu"_s});
        QVERIFY(!office->window->recentsMenuItem()->menu()->actions().first()->isEnabled());

        office->delegate->loadXMLFile(specimen());
        QVERIFY(isSaved(*office));
        QVERIFY(isSaved(*office));
        const QStringList one{u"SPECIMEN Hélène.pdf"_s, u"-"_s, u"Effacer le menu"_s};
        QCOMPARE(recents(*office), one);
        QCOMPARE(QDir(office->attestations()).entryList(QDir::Files | QDir::Hidden),
                 QStringList{u"SPECIMEN Hélène.pdf"_s});
    }

    void clearingTheMenuFromTheMenuEmptiesIt()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        office->delegate->loadXMLFile(specimen());
        QVERIFY(isSaved(*office));
        office->window->recentsMenuItem()->menu()->actions().last()->trigger();
        QCOMPARE(recents(*office), QStringList{u"Effacer le menu"_s});
        QVERIFY(QFileInfo(office->attestations() + u"/SPECIMEN Hélène.pdf"_s).isFile());
    }

    void anUnusableFolderSavesNothingAndThePanelSaysSo()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        QVERIFY(writeFile(office->path(u"plein"_s), "x"));
        MVSettings::setPreferencesWithStringValue(office->settings, Settings::attestationsFolder,
                                                  office->path(u"plein"_s));
        office->delegate->loadXMLFile(specimen());
        QVERIFY(isSaved(*office));
        QVERIFY(!Office::alert());
        QCOMPARE(recents(*office), QStringList{u"Effacer le menu"_s});
        const QString told = u"Non enregistrée\u00A0: le dossier est inutilisable. Changez-le dans les préférences."_s;
        QVERIFY(panelLine(*office).endsWith(u'\n' + told));

        // Until the next save, whatever happens meanwhile.
        office->delegate->loadXMLFile(specimen());
        QVERIFY(panelLine(*office).endsWith(u'\n' + told));
        MVSettings::setPreferencesWithStringValue(office->settings, Settings::attestationsFolder,
                                                  office->path(u"vide"_s));
        QVERIFY(isSaved(*office));
        QVERIFY(!panelLine(*office).contains(u'\n'));
    }

    void aWriteThatFailedIsLoggedWithoutTheNameAndAnnouncedAllTheSame()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        office->delegate->loadXMLFile(specimen());
        // A folder where the file should go cannot be replaced.
        QVERIFY(QDir().mkpath(office->attestations() + u"/SPECIMEN Hélène.pdf/x"_s));

        m_log.clear();
        QVERIFY(isSaved(*office));
        QCOMPARE(m_log.lines(), QStringList{u"The attestation was not written: un dossier porte déjà ce nom"_s});
        QCOMPARE(Office::alertText(), std::optional(u"L'attestation a bien été enregistrée."_s));
        QCOMPARE(recents(*office).first(), u"SPECIMEN Hélène.pdf"_s);
    }

    void theTruthAboutAWriteThatFailedFollowsTheAnnouncement()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        office->delegate->loadXMLFile(specimen());
        const QString inTheWay = office->attestations() + u"/SPECIMEN Hélène.pdf"_s;
        QVERIFY(QDir().mkpath(inTheWay + u"/x"_s));
        QVERIFY(isSaved(*office));
        pressOk();
        QTRY_COMPARE(
            Office::alertText(),
            std::optional(u"Malgré le message précédent, rien n’a été écrit\u00A0: «\u202FSPECIMEN Hélène.pdf\u202F» "
                          "n’est pas enregistré, car un dossier porte déjà ce nom.\n\nRenommez ou déplacez le "
                          "dossier qui porte ce nom, puis enregistrez de nouveau."_s));
        pressOk();
        QTRY_VERIFY(!Office::alert());
        QVERIFY(panelLine(*office).endsWith(
            u"\nNon enregistrée\u00A0: un dossier porte déjà ce nom («\u202FSPECIMEN Hélène.pdf\u202F»)."_s));

        QVERIFY(QDir(inTheWay).removeRecursively());
        QVERIFY(isSaved(*office));
        QVERIFY(!panelLine(*office).contains(u'\n'));
        pressOk();
        QTRY_VERIFY(!Office::alert());
    }

    void aFailedReadIsInThePanelUntilACardIsThere()
    {
        const QTemporaryDir folder;
        const auto office = boundOffice(simulation(folder.filePath(u"absent.xml"_s)));
        QVERIFY(office);
        office->delegate->readVitale(nullptr);
        QTRY_VERIFY(Office::alert());
        QVERIFY(panelLine(*office).startsWith(u"Lecture échouée à "_s));
        QCOMPARE(summary(*office), u"Aucune"_s);
        office->delegate->loadXMLFile(specimen());
        QVERIFY(panelLine(*office).startsWith(u"Fichier ouvert le "_s));
        pressOk();
        office->delegate->readVitale(nullptr);
        QTRY_VERIFY(panelLine(*office).contains(u" – carte précédente, fichier ouvert à "_s));
        QVERIFY(summary(*office).startsWith(u"SPECIMEN Hélène\n"_s));
    }

    void aReadWhoseBindFailsHasFailed()
    {
        const Office office(m_fake.command(withoutReader));
        office.start();
        QTRY_VERIFY(Office::alert());
        QCOMPARE(panelLine(office), u"Insérez une carte, puis appuyez sur Lire."_s);
        pressOk();
        office.delegate->loadXMLFile(specimen());
        office.delegate->readVitale(nullptr);
        QTRY_VERIFY(panelLine(office).startsWith(u"Lecture échouée à "_s));
    }

    void whileAFileIsWrittenNothingElseBegins_data()
    {
        QTest::addColumn<Request>("request");
        QTest::newRow("read") << Request([](AppDelegate& delegate) { delegate.readVitale(nullptr); });
        QTest::newRow("print") << Request([](AppDelegate& delegate) { delegate.printAttestation(); });
        QTest::newRow("save") << Request([](AppDelegate& delegate) { delegate.saveAttestation(); });
        QTest::newRow("choose a file") << Request([](AppDelegate& delegate) { delegate.loadXMLFile(); });
        QTest::newRow("open a file") << Request([](AppDelegate& delegate) { delegate.loadXMLFile(specimen()); });
    }

    void whileAFileIsWrittenNothingElseBegins()
    {
        QFETCH(const Request, request);
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        const QString before = panelLine(*office);
        const qsizetype reads = m_fake.requested(u"Command"_s).count(u"vitale_read"_s);
        std::promise<void> disk;
        FileWorker::shared().start(office->window.get(), [answer = disk.get_future().share()] {
            answer.wait();
            return [] {};
        });
        request(*office->delegate);
        const QString line = panelLine(*office);
        const QWidget* panel = QApplication::activeModalWidget();
        disk.set_value();
        QCOMPARE(line, before + u"\nUn enregistrement est en cours."_s);
        QVERIFY(!panel);
        QTRY_COMPARE(panelLine(*office), before);
        QCOMPARE(m_fake.requested(u"Command"_s).count(u"vitale_read"_s), reads);
        QCOMPARE(summary(*office), u"Aucune"_s);
        QVERIFY(!QFileInfo::exists(office->attestations()));
    }

    void theNextRequestThatIsGrantedTakesANoticeAway()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        const QTemporaryDir withoutContact;
        const AnnouncedMessages noInformation(u"The information dictionary cannot be read."_s);
        const Office other(m_fake.command(), withoutContact.path());
        other.start();
        other.delegate->loadXMLFile(specimen());
        const QString before = panelLine(other);
        const auto requests = {+[](AppDelegate& delegate) { delegate.viewAttestation(); },
                               +[](AppDelegate& delegate) { delegate.loadXMLFile(specimen()); },
                               +[](AppDelegate& delegate) { delegate.showHelp(); }};
        for (const auto& request : requests) {
            other.delegate->sendComment();
            QCOMPARE(panelLine(other), before + u"\nAucune adresse n’est connue pour les suggestions."_s);
            request(*other.delegate);
            QVERIFY(!panelLine(other).contains(u'\n'));
        }
    }

    void aRefusalBringsAHiddenWindowBack()
    {
        const Office office(m_fake.command(silent));
        office.start();
        office.window->hide();
        QAction read;
        read.setData(StatusMenu::ReadTag);
        office.delegate->executeAction(&read);
        QVERIFY(office.window->isVisible());
        QVERIFY(panelLine(office).endsWith(u"\nLe lecteur de cartes n’est pas prêt. Appuyez sur Lire."_s));
    }

    void withDebugModeOffAReadWritesNoFile()
    {
        const auto office = boundOffice(simulation(specimen()));
        QVERIFY(office);
        office->delegate->readVitale(nullptr);
        QTRY_VERIFY(summary(*office) != u"Aucune"_s);
        QVERIFY(!QFileInfo::exists(office->attestations()));
    }

    void inDebugModeAReadLeavesItsCopies()
    {
        const auto office = boundOffice(simulation(specimen()));
        QVERIFY(office);
        MVSettings::setPreferencesWithBooleanValue(office->settings, Settings::debugMode, true);
        office->delegate->readVitale(nullptr);
        QTRY_COMPARE(QDir(office->attestations()).entryList(QDir::Files),
                     (QStringList{u"SPECIMEN_Hélène.plist"_s, u"SPECIMEN_Hélène.xml"_s}));
    }

    void viewingWithACardShowsItWithoutReading()
    {
        const auto office = boundOffice(m_fake.command());
        QVERIFY(office);
        const qsizetype reads = m_fake.requested(u"Command"_s).count(u"vitale_read"_s);
        office->delegate->loadXMLFile(specimen());
        office->delegate->viewAttestation();
        const QWidgetList windows = QApplication::topLevelWidgets();
        QVERIFY(std::any_of(windows.begin(), windows.end(), [](const QWidget* window) {
            return window->isVisible() && window->windowTitle() == u"Hélène SPECIMEN"_s;
        }));
        QVERIFY(!office->delegate->isReading());
        QCOMPARE(m_fake.requested(u"Command"_s).count(u"vitale_read"_s), reads);
    }

    void menuEntriesOfCardActionsFollowTheBind()
    {
        const Office office(m_fake.command(withoutReader));
        office.start();
        QTRY_VERIFY(Office::alert());
        for (const QString& name : {u"readAction"_s, u"viewAction"_s, u"printAction"_s, u"saveAction"_s})
            QVERIFY2(!office.window->findChild<QAction*>(name)->isEnabled(), qPrintable(name));
        for (const QString& name : {u"folderAction"_s, u"quitAction"_s, u"settingsAction"_s, u"helpAction"_s})
            QVERIFY2(office.window->findChild<QAction*>(name)->isEnabled(), qPrintable(name));
    }

    void debugModeIsOffAfterEveryStart()
    {
        const Office office(m_fake.command(silent));
        MVSettings::setPreferencesWithBooleanValue(office.settings, Settings::debugMode, true);
        office.start();
        QVERIFY(!MVSettings::booleanPreferencesForKey(office.settings, Settings::debugMode));
    }
};

QTEST_MAIN(tst_AppDelegate)
#include "tst_appdelegate.moc"
