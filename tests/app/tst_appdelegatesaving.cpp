#include "platform/files/FileWorker.h"
#include "tests/app/Office.h"
#include "tests/common/Files.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QSignalSpy>

#include <future>

using namespace Qt::StringLiterals;

namespace {

// Saves the attestation, and waits until the write has ended.
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

const QString saved = u"Enregistrée\u00A0: SPECIMEN Hélène.pdf"_s;

// A request of the user.
using Request = void (*)(AppDelegate&);

} // namespace

/// The files that the controller writes, and its messages about them.
class tst_AppDelegateSaving : public TestCase
{
    Q_OBJECT

private:
    LogCapture m_log;

private Q_SLOTS:
    void aCardOfAFileHasNoFundName()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        office->delegate->loadXMLFile(Office::specimen());
        QVERIFY(office->summary().startsWith(u"SPECIMEN Hélène\n"_s));
        office->delegate->saveAttestation();
        QTRY_COMPARE(Office::alertText(), std::optional(u"L'attestation a bien été enregistrée."_s));
        QVERIFY(QFileInfo(office->attestations() + u"/SPECIMEN Hélène.pdf"_s).isFile());
        QCOMPARE(office->notice(), saved);
    }

    void theSavedFileIsShownUntilTheNextRequestOrFailure()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        for (const Request next : {Request([](AppDelegate& delegate) { delegate.readVitale(nullptr); }),
                                   Request([](AppDelegate& delegate) { delegate.viewAttestation(); }),
                                   Request([](AppDelegate& delegate) { delegate.loadXMLFile(u"/absent.xml"_s); })}) {
            office->delegate->loadXMLFile(Office::specimen());
            QVERIFY(isSaved(*office));
            QCOMPARE(office->notice(), saved);
            Office::pressOk();
            QTRY_VERIFY(!Office::alert());
            next(*office->delegate);
            QCOMPARE(office->notice(), QString());
            QTRY_VERIFY(!office->delegate->isReading());
            Office::pressOk();
            QTRY_VERIFY(!Office::alert());
        }
    }

    void savingTwiceAddsOneRecentFile()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        QCOMPARE(recents(*office), QStringList{u"Effacer le menu"_s});
        QVERIFY(!office->window->recentsMenuItem()->menu()->actions().first()->isEnabled());

        office->delegate->loadXMLFile(Office::specimen());
        QVERIFY(isSaved(*office));
        QVERIFY(isSaved(*office));
        const QStringList one{u"SPECIMEN Hélène.pdf"_s, u"-"_s, u"Effacer le menu"_s};
        QCOMPARE(recents(*office), one);
        QCOMPARE(namesIn(office->attestations()), QStringList{u"SPECIMEN Hélène.pdf"_s});
    }

    void theClearEntryEmptiesTheMenu()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        office->delegate->loadXMLFile(Office::specimen());
        QVERIFY(isSaved(*office));
        office->window->recentsMenuItem()->menu()->actions().last()->trigger();
        QCOMPARE(recents(*office), QStringList{u"Effacer le menu"_s});
        QVERIFY(QFileInfo(office->attestations() + u"/SPECIMEN Hélène.pdf"_s).isFile());
    }

    void anUnusableFolderIsReportedInThePanelAndNothingIsSaved()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        QVERIFY(writeFile(office->path(u"plein"_s), "x"));
        MVSettings::setPreferencesWithStringValue(office->settings, Settings::attestationsFolder,
                                                  office->path(u"plein"_s));
        office->delegate->loadXMLFile(Office::specimen());
        QVERIFY(isSaved(*office));
        QVERIFY(!Office::alert());
        QCOMPARE(recents(*office), QStringList{u"Effacer le menu"_s});
        const QString told = u"Non enregistrée\u00A0: le dossier est inutilisable. Changez-le dans les préférences."_s;
        QVERIFY(office->panelLine().endsWith(u'\n' + told));

        // The message stays until the next save.
        office->delegate->loadXMLFile(Office::specimen());
        QVERIFY(office->panelLine().endsWith(u'\n' + told));
        MVSettings::setPreferencesWithStringValue(office->settings, Settings::attestationsFolder,
                                                  office->path(u"vide"_s));
        QVERIFY(isSaved(*office));
        QCOMPARE(office->notice(), saved);
    }

    void aFailedWriteIsLoggedWithoutTheNameAndStillAnnounced()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        office->delegate->loadXMLFile(Office::specimen());
        // A folder with the name of the file prevents the write.
        QVERIFY(QDir().mkpath(office->attestations() + u"/SPECIMEN Hélène.pdf/x"_s));

        m_log.clear();
        QVERIFY(isSaved(*office));
        QCOMPARE(m_log.lines(), QStringList{u"The attestation was not written: un dossier porte déjà ce nom"_s});
        QCOMPARE(Office::alertText(), std::optional(u"L'attestation a bien été enregistrée."_s));
        QCOMPARE(recents(*office).first(), u"SPECIMEN Hélène.pdf"_s);
    }

    void anAlertCorrectsTheAnnouncementOfAFailedWrite()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        office->delegate->loadXMLFile(Office::specimen());
        const QString inTheWay = office->attestations() + u"/SPECIMEN Hélène.pdf"_s;
        QVERIFY(QDir().mkpath(inTheWay + u"/x"_s));
        QVERIFY(isSaved(*office));
        Office::pressOk();
        QTRY_COMPARE(
            Office::alertText(),
            std::optional(u"Malgré le message précédent, rien n’a été écrit\u00A0: «\u202FSPECIMEN Hélène.pdf\u202F» "
                          "n’est pas enregistré, car un dossier porte déjà ce nom.\n\nRenommez ou déplacez le "
                          "dossier qui porte ce nom, puis enregistrez de nouveau."_s));
        Office::pressOk();
        QTRY_VERIFY(!Office::alert());
        QVERIFY(office->panelLine().endsWith(
            u"\nNon enregistrée\u00A0: un dossier porte déjà ce nom («\u202FSPECIMEN Hélène.pdf\u202F»)."_s));

        QVERIFY(QDir(inTheWay).removeRecursively());
        QVERIFY(isSaved(*office));
        QCOMPARE(office->notice(), saved);
        Office::pressOk();
        QTRY_VERIFY(!Office::alert());
    }

    void whileAFileIsWrittenOtherRequestsAreRefused_data()
    {
        QTest::addColumn<Request>("request");
        QTest::newRow("read") << Request([](AppDelegate& delegate) { delegate.readVitale(nullptr); });
        QTest::newRow("print") << Request([](AppDelegate& delegate) { delegate.printAttestation(); });
        QTest::newRow("save") << Request([](AppDelegate& delegate) { delegate.saveAttestation(); });
        QTest::newRow("choose a file") << Request([](AppDelegate& delegate) { delegate.loadXMLFile(); });
        QTest::newRow("open a file") << Request(
            [](AppDelegate& delegate) { delegate.loadXMLFile(Office::specimen()); });
    }

    void whileAFileIsWrittenOtherRequestsAreRefused()
    {
        QFETCH(const Request, request);
        const auto office = Office::bound();
        QVERIFY(office);
        const QString before = office->panelLine();
        const qsizetype reads = office->reads();
        std::promise<void> disk;
        FileWorker::shared().start(office->window.get(), [answer = disk.get_future().share()] {
            answer.wait();
            return [] {};
        });
        request(*office->delegate);
        const QString line = office->panelLine();
        const QWidget* panel = QApplication::activeModalWidget();
        disk.set_value();
        QCOMPARE(line, before + u"\nUn enregistrement est en cours."_s);
        QVERIFY(!panel);
        QTRY_COMPARE(office->panelLine(), before);
        QCOMPARE(office->reads(), reads);
        QCOMPARE(office->summary(), u"Aucune"_s);
        QVERIFY(!QFileInfo::exists(office->attestations()));
    }

    void withDebugModeOffAReadWritesNoFile()
    {
        const auto office = Office::bound(Office::simulation(Office::specimen()));
        QVERIFY(office);
        office->delegate->readVitale(nullptr);
        QTRY_VERIFY(office->summary() != u"Aucune"_s);
        QVERIFY(!QFileInfo::exists(office->attestations()));
    }

    void inDebugModeAReadWritesItsCopies()
    {
        const auto office = Office::bound(Office::simulation(Office::specimen()));
        QVERIFY(office);
        MVSettings::setPreferencesWithBooleanValue(office->settings, Settings::debugMode, true);
        office->delegate->readVitale(nullptr);
        QTRY_COMPARE(namesIn(office->attestations()),
                     (QStringList{u"SPECIMEN_Hélène.plist"_s, u"SPECIMEN_Hélène.xml"_s}));
    }
};

template class RunnableTests<tst_AppDelegateSaving, QApplication>;
#include "tst_appdelegatesaving.moc"
