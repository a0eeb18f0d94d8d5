#include "attestation/print/PrinterSearch.h"
#include "attestation/print/WithoutPrintServer.h"
#include "tests/attestation/print/PrintingWindow.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/SilentServer.h"

#include <QLabel>
#include <QPrinter>
#include <QPrinterInfo>

using namespace Qt::StringLiterals;

class tst_PrintDesk : public TestCase, private PrintingWindow
{
    Q_OBJECT

private:
    [[nodiscard]] PrinterSearch* search() const { return m_window->findChild<PrinterSearch*>(); }

private Q_SLOTS:
    void init() { QVERIFY(open()); }
    void cleanup() { close(); }

    void theDialogBelongsToTheRequestingWindowAndClosesWithIt()
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
    }

    void theOptionsStartWithTheWholeSheet()
    {
        const QPointer<PrinterOptions> dialog = openOptions();
        QVERIFY(dialog);
        QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
        QCOMPARE(dialog->windowTitle(), u"Imprimer l’attestation – SPECIMEN Marie"_s);
        const QPageLayout sheet = dialog->printer()->pageLayout();
        QCOMPARE(sheet.fullRectPoints().size(), QSize(595, 842));
        QCOMPARE(sheet.paintRectPoints().size(), QSize(595, 842));
        QCOMPARE(dialog->printer()->docName(), u"Attestation de droits"_s);
    }

    void onlyOneDialogIsOpenForAllWindows()
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

    void theDeskIsAskingFromTheRequestToTheEndOfTheDialog_data()
    {
        QTest::addColumn<bool>("isAccepted");
        QTest::newRow("accepted") << true;
        QTest::newRow("rejected") << false;
    }

    void theDeskIsAskingFromTheRequestToTheEndOfTheDialog()
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

    void aPrintCanBeginWhileTheLastFileIsWritten()
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

    void printingIsAllowedOnlyWithThePermission()
    {
        QVERIFY(m_desk->mayPrint());
        bool isPermitted = false;
        m_desk->setPermission([&isPermitted] { return isPermitted; });
        QVERIFY(!m_desk->mayPrint());
        isPermitted = true;
        QVERIFY(m_desk->mayPrint());
    }

    void bringToFrontRaisesTheDialogWithItsWindow()
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

    void aSlowSearchIsShownAndCanBeCancelled()
    {
        const SilentServer server("CUPS_SERVER");
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
        const SilentServer server("CUPS_SERVER");
        QVERIFY(server.isListening());
        print();
        QVERIFY(!search()->isVisible());
        print();
        QVERIFY(search()->isVisible());
        QCOMPARE(operations().size(), 1);
    }

    void theDialogReplacesTheSearchWindow()
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

    void afterACancelledSearchTheNextOneAsksTheServerAgain()
    {
        {
            const SilentServer server("CUPS_SERVER");
            QVERIFY(server.isListening());
            print();
            search()->reject();
            QVERIFY(!m_desk->isAsking());
        }
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        QVERIFY(m_desk->isAsking());
    }

    void withoutAPrintServerQtAsksForNoQueues()
    {
        {
            // Its destructor makes this thread forget the server that it has used.
            const WithoutPrintServer before;
        }
        const SilentServer server("CUPS_SERVER");
        QVERIFY(server.isListening());
        const WithoutPrintServer without;
        QCOMPARE(QPrinterInfo::availablePrinterNames(), QStringList());
        QCoreApplication::processEvents();
        QVERIFY(!server.isAsked());
    }

    void theWindowCanCloseWhileItsDialogIsOpen()
    {
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        close();
        QVERIFY(!dialog);
    }

    void theWindowCanCloseBeforeItsDialogOpens()
    {
        print();
        const QPointer<PrintOperation> operation = operations().value(0);
        QVERIFY(operation);
        close();
        QVERIFY(!operation);
        QCoreApplication::processEvents();
        QCOMPARE(QApplication::activeModalWidget(), nullptr);
    }
};

template class RunnableTests<tst_PrintDesk, ApplicationWithoutPrintServer>;
#include "tst_printdesk.moc"
