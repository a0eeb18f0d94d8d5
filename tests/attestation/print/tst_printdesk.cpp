#include "attestation/page/SchemeLogos.h"
#include "attestation/print/PrintDesk.h"
#include "attestation/print/PrintDialog.h"
#include "attestation/print/PrintOperation.h"
#include "attestation/print/PrinterSearch.h"
#include "attestation/print/WithoutPrintServer.h"
#include "platform/gui/AlertQueue.h"
#include "tests/attestation/document/Tools.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/Files.h"
#include "tests/common/TestCase.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QLocalServer>
#include <QMessageBox>
#include <QPointer>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

/// Leads programs to a print server that takes connections and never answers, as long as it lives.
class StalledServer
{
public:
    StalledServer()
    {
        m_isListening = m_server.listen(m_folder.filePath(u"cups.sock"_s));
        qputenv("CUPS_SERVER", QFile::encodeName(m_server.fullServerName()));
    }
    ~StalledServer() { qputenv("CUPS_SERVER", m_serverBefore); }
    StalledServer(const StalledServer&) = delete;
    StalledServer& operator=(const StalledServer&) = delete;

    [[nodiscard]] bool isListening() const { return m_isListening; }
    /// Whether it was asked for something.
    [[nodiscard]] bool isAsked() const { return m_server.hasPendingConnections(); }

private:
    QTemporaryDir m_folder;
    QLocalServer m_server;
    bool m_isListening = false;
    QByteArray m_serverBefore = qgetenv("CUPS_SERVER");
};

} // namespace

// No print server is there, but for some tests: the dialog offers a file alone.
class tst_PrintDesk : public TestCase
{
    Q_OBJECT

private:
    void useHelper(const QString& program)
    {
        m_desk = std::make_unique<PrintDesk>(m_settings.store(), *m_logos, *m_fonts, program);
    }

    void print() { m_desk->print(specimenCard(2), *m_alerts, *m_window); }

    [[nodiscard]] QList<PrintOperation*> operations() const { return m_window->findChildren<PrintOperation*>(); }
    [[nodiscard]] QMessageBox* alert() const { return m_window->findChild<QMessageBox*>(); }

    PrintDialog* openDialog()
    {
        print();
        const auto dialog = [this] { return m_window->findChild<PrintDialog*>(); };
        return QTest::qWaitFor([&dialog] { return dialog() != nullptr && dialog()->isVisible(); }) ? dialog() : nullptr;
    }

    [[nodiscard]] PrinterSearch* search() const { return m_window->findChild<PrinterSearch*>(); }

    static QString existingFile(const QTemporaryDir& folder)
    {
        QFile file(folder.filePath(u"page.pdf"_s));
        return file.open(QIODevice::WriteOnly) && file.write("the user's") > 0 ? file.fileName() : QString();
    }

    static void pressPrint(const PrintDialog& dialog)
    {
        dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
    }

    static QMessageBox* questionIn(const PrintDialog& dialog) { return dialog.findChild<QMessageBox*>(); }

    static void press(const QMessageBox& box, const QString& name)
    {
        for (QAbstractButton* button : box.buttons()) {
            if (button->text() == name)
                button->click();
        }
    }

    static void chooseFile(const PrintDialog& dialog, const QString& path)
    {
        dialog.findChild<QLineEdit*>(u"filename"_s)->setText(path);
    }

    TemporarySettings m_settings;
    std::optional<PageFonts> m_fonts;
    std::unique_ptr<SchemeLogos> m_logos;
    std::unique_ptr<PrintDesk> m_desk;
    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<AlertQueue> m_alerts;

private Q_SLOTS:
    void initTestCase()
    {
        m_fonts.emplace(pageFonts());
        m_logos = std::make_unique<SchemeLogos>(stagedBundle());
    }

    void init()
    {
        useHelper(stagedBundle().pathForProgram(u"pelmora-print"_s));
        m_window = std::make_unique<QWidget>();
        m_alerts = std::make_unique<AlertQueue>(m_window.get());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void cleanup()
    {
        m_alerts.reset();
        m_window.reset();
    }

    void theDialogOpensOnTheWindowThatAsksAndGoesWhenItCloses()
    {
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        QCOMPARE(dialog->parentWidget(), m_window.get());
        dialog->reject();
        QTRY_VERIFY(!dialog);
        QTRY_VERIFY(operations().isEmpty());
    }

    void theDialogBlocksAllWindowsAndNamesThePatient()
    {
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
        QCOMPARE(dialog->windowTitle(), u"Imprimer l’attestation – SPECIMEN Marie"_s);
        QCOMPARE(dialog->printer()->docName(), u"Attestation de droits"_s);
    }

    void theDialogStartsWithTheWholeSheet()
    {
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        const QPageLayout sheet = dialog->printer()->pageLayout();
        QCOMPARE(sheet.fullRectPoints().size(), QSize(595, 842));
        QCOMPARE(sheet.paintRectPoints().size(), QSize(595, 842));
        QCOMPARE(dialog->printer()->docName(), u"Attestation de droits"_s);
    }

    void allWindowsTogetherHaveOneDialog()
    {
        print();
        QWidget other;
        AlertQueue alerts(&other);
        m_desk->print(specimenCard(1), alerts, other);
        print();
        QTRY_COMPARE(m_window->findChildren<PrintDialog*>().size(), 1);
        m_desk->print(specimenCard(1), alerts, other);
        QCOMPARE(other.findChildren<PrintOperation*>().size(), 0);
        QCOMPARE(operations().size(), 1);
        QCOMPARE(m_window->findChildren<PrintDialog*>().size(), 1);
    }

    void aPrintAsksFromItsRequestToTheEndOfItsDialog_data()
    {
        QTest::addColumn<bool>("isAccepted");
        QTest::newRow("accepted") << true;
        QTest::newRow("rejected") << false;
    }

    void aPrintAsksFromItsRequestToTheEndOfItsDialog()
    {
        QFETCH(const bool, isAccepted);
        const QTemporaryDir folder;
        QVERIFY(!m_desk->isAsking());
        print();
        QVERIFY(m_desk->isAsking());
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        QVERIFY(m_desk->isAsking());
        chooseFile(*dialog, folder.filePath(u"page.pdf"_s));
        if (isAccepted)
            pressPrint(*dialog);
        else
            dialog->reject();
        QVERIFY(!m_desk->isAsking());
        QTRY_VERIFY(operations().isEmpty());
    }

    void aNewPrintMayAskWhileTheLastPageIsWritten()
    {
        const QTemporaryDir folder;
        QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        chooseFile(*dialog, folder.filePath(u"first.pdf"_s));
        pressPrint(*dialog);
        QTRY_VERIFY(!dialog);
        m_desk->print(specimenCard(1), *m_alerts, *m_window);
        QVERIFY(m_desk->isAsking());
        QTRY_VERIFY(QFile::exists(folder.filePath(u"first.pdf"_s)));
        QTRY_COMPARE(m_window->findChildren<PrintDialog*>().size(), 1);
    }

    void aWindowMayPrintAsTheDesksOwnerPermits()
    {
        QVERIFY(m_desk->mayPrint());
        bool isPermitted = false;
        m_desk->setPermission([&isPermitted] { return isPermitted; });
        QVERIFY(!m_desk->mayPrint());
        isPermitted = true;
        QVERIFY(m_desk->mayPrint());
    }

    void aDialogBehindIsBroughtToTheFrontWithItsWindow()
    {
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        m_window->showMinimized();
        m_desk->bringToFront();
        QVERIFY(!m_window->isMinimized());
        QTRY_COMPARE(QApplication::activeWindow(), dialog.get());
    }

    void anAlertOfAnotherWindowCanBeAnsweredUnderTheDialog()
    {
        QWidget other;
        AlertQueue alerts(&other);
        other.show();
        QVERIFY(QTest::qWaitForWindowExposed(&other));
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        alerts.presentMessage(u"titre"_s, u"texte"_s);
        const QPointer<QMessageBox> box = other.findChild<QMessageBox*>();
        QVERIFY(box);
        QVERIFY(QTest::qWaitForWindowExposed(box));
        QTest::mouseClick(box->defaultButton(), Qt::LeftButton);
        QTRY_VERIFY(!box);
        QVERIFY(dialog && dialog->isVisible());
        QTest::keyClick(dialog->windowHandle(), Qt::Key_Escape);
        QTRY_VERIFY(!dialog);
    }

    void aSearchThatTakesLongIsSaidAndCanBeStopped()
    {
        const StalledServer server;
        QVERIFY(server.isListening());
        print();
        const QPointer<PrinterSearch> window = search();
        QVERIFY(window && !window->isVisible());
        QTRY_VERIFY(window->isVisible());
        QCOMPARE(window->windowModality(), Qt::ApplicationModal);
        QCOMPARE(window->findChild<QLabel*>()->text(), u"Recherche des imprimantes…"_s);
        QVERIFY(server.isAsked());

        auto* cancel = window->findChild<QAbstractButton*>();
        QCOMPARE(cancel->text(), u"Annuler"_s);
        QTest::mouseClick(cancel, Qt::LeftButton);
        QVERIFY(!window->isVisible());
        QVERIFY(!m_desk->isAsking());
        QTRY_VERIFY(operations().isEmpty());
        QVERIFY(m_window->findChild<PrintDialog*>() == nullptr);
        QVERIFY(alert() == nullptr);
    }

    void aSecondRequestShowsTheSearchAtOnce()
    {
        const StalledServer server;
        QVERIFY(server.isListening());
        print();
        QVERIFY(!search()->isVisible());
        print();
        QVERIFY(search()->isVisible());
        QCOMPARE(operations().size(), 1);
    }

    void theDialogTakesTheSearchsPlace()
    {
        print();
        m_desk->bringToFront();
        const QPointer<PrinterSearch> window = search();
        QVERIFY(window && window->isVisible());
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        QVERIFY(!window);
        QCOMPARE(QApplication::activeModalWidget(), dialog.get());
    }

    void afterASearchThatWasStoppedTheNextOneAsksAgain()
    {
        {
            const StalledServer server;
            QVERIFY(server.isListening());
            print();
            search()->reject();
            QVERIFY(!m_desk->isAsking());
        }
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        QVERIFY(m_desk->isAsking());
    }

    void withoutItsProgramAPrintGoesToAFile()
    {
        const QTemporaryDir folder;
        useHelper(folder.filePath(u"absent"_s));
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        QTRY_VERIFY(questionIn(*dialog) != nullptr);
        QCOMPARE(questionIn(*dialog)->text(),
                 u"Le programme d’impression de Pelmora ne fonctionne pas. Pour l’instant, l’attestation ne peut être "
                 "imprimée que dans un fichier PDF."_s);
        questionIn(*dialog)->accept();
        chooseFile(*dialog, folder.filePath(u"page.pdf"_s));
        pressPrint(*dialog);
        QTRY_VERIFY(contentOf(folder.filePath(u"page.pdf"_s)).startsWith("%PDF"));
    }

    void qtCanDoWithoutTheServer()
    {
        {
            // Its end makes this thread forget the server that it has used so far.
            const WithoutPrintServer before;
        }
        const StalledServer server;
        QVERIFY(server.isListening());
        const WithoutPrintServer without;
        QCOMPARE(QPrinterInfo::availablePrinterNames(), QStringList());
        QCoreApplication::processEvents();
        QVERIFY(!server.isAsked());
    }

    void theFileIsPrivateAndWhole()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"page.pdf"_s);
        PrintDialog* dialog = openDialog();
        QVERIFY(dialog != nullptr);
        chooseFile(*dialog, path);
        pressPrint(*dialog);
        QTRY_VERIFY(operations().isEmpty());
        QCOMPARE(QFile::permissions(path) & ~(QFile::ReadUser | QFile::WriteUser),
                 QFile::ReadOwner | QFile::WriteOwner);
        QVERIFY(toolOutput(u"pdftotext"_s, {path, u"-"_s}).contains("SPECIMEN Marie"));
    }

    void aFileThatCannotBeWrittenIsTold()
    {
        PrintDialog* dialog = openDialog();
        QVERIFY(dialog != nullptr);
        chooseFile(*dialog, u"/proc/page.pdf"_s);
        pressPrint(*dialog);
        QTRY_VERIFY(alert() != nullptr);
        QVERIFY(alert()->text().startsWith(u"« /proc/page.pdf » n’a pas été enregistré : "_s));
        alert()->accept();
        QTRY_VERIFY(operations().isEmpty());
    }

    void failuresAreToldOneAfterAnother()
    {
        for (const QString& path : {u"/proc/first.pdf"_s, u"/proc/second.pdf"_s}) {
            PrintDialog* dialog = openDialog();
            QVERIFY(dialog != nullptr);
            chooseFile(*dialog, path);
            pressPrint(*dialog);
            QTRY_VERIFY(operations().isEmpty());
        }
        QCOMPARE(m_window->findChildren<QMessageBox*>().size(), 1);
        QVERIFY(alert()->text().contains(u"first"_s));
        alert()->accept();
        QTRY_VERIFY(alert() != nullptr && alert()->text().contains(u"second"_s));
    }

    void aFileThatExistsIsReplacedWhenTheUserSaysSo()
    {
        const QTemporaryDir folder;
        const QString path = existingFile(folder);
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        chooseFile(*dialog, path);

        pressPrint(*dialog);
        QVERIFY(questionIn(*dialog) != nullptr);
        QCOMPARE(questionIn(*dialog)->text(), u"« %1 » existe déjà.\nVoulez-vous le remplacer\u202F?"_s.arg(path));
        press(*questionIn(*dialog), u"Annuler"_s);
        QTRY_VERIFY(questionIn(*dialog) == nullptr);
        QVERIFY(dialog->isVisible());
        QCOMPARE(contentOf(path), "the user's"_ba);

        pressPrint(*dialog);
        press(*questionIn(*dialog), u"Remplacer"_s);
        QTRY_VERIFY(operations().isEmpty());
        QVERIFY(contentOf(path).startsWith("%PDF"));
    }

    void theEndOfTheWindowIsNoAnswer()
    {
        const QTemporaryDir folder;
        const QString path = existingFile(folder);
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        chooseFile(*dialog, path);
        pressPrint(*dialog);
        QVERIFY(questionIn(*dialog) != nullptr);
        cleanup();
        QVERIFY(!dialog);
        QCOMPARE(contentOf(path), "the user's"_ba);
    }

    void aFolderIsNoFile_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("nothing") << u""_s;
        QTest::newRow("folder") << u"/tmp"_s;
        QTest::newRow("folder with its slash") << QTemporaryDir().filePath(u"gone/"_s);
    }

    void aFolderIsNoFile()
    {
        QFETCH(const QString, path);
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        chooseFile(*dialog, path);
        pressPrint(*dialog);
        QTRY_VERIFY(questionIn(*dialog) != nullptr);
        QCOMPARE(questionIn(*dialog)->text(), u"Indiquez le nom du fichier à enregistrer."_s);
        QVERIFY(dialog->isVisible());
    }

    void theFileHasThePaperThatIsChosen()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"page.pdf"_s);
        PrintDialog* dialog = openDialog();
        QVERIFY(dialog != nullptr);
        chooseFile(*dialog, path);
        // As the dialog's page of properties does.
        dialog->printer()->setPageSize(QPageSize(QPageSize::A5));
        pressPrint(*dialog);
        QTRY_VERIFY(operations().isEmpty());
        QVERIFY(toolOutput(u"pdfinfo"_s, {path}).contains("Page size:       420 x 595 pts (A5)"));
    }

    void theWindowMayGoWhileItsDialogIsOpen()
    {
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        cleanup();
        QVERIFY(!dialog);
    }

    void theWindowMayGoBeforeItsDialogOpens()
    {
        print();
        cleanup();
        QCoreApplication::processEvents();
    }
};

int main(int argc, char** argv)
{
    const QTemporaryDir withoutServer;
    qputenv("CUPS_SERVER", QFile::encodeName(withoutServer.filePath(u"cups.sock"_s)));
    const QApplication application(argc, argv);
    tst_PrintDesk test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_printdesk.moc"
