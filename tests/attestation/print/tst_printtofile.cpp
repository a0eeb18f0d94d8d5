#include "prefs/settings/MVSettings.h"
#include "tests/attestation/document/Tools.h"
#include "tests/attestation/print/PrintingWindow.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"

#include <QPrinter>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

class tst_PrintToFile : public TestCase, private PrintingWindow
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY(open()); }
    void cleanup() { close(); }

    void withoutThePrintProgramAPrintGoesToAFile()
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

    void theOfferedFileIsThatOfTheDeskAndItsFolderIsMade()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"Attestations/SPECIMEN Marie.pdf"_s);
        m_desk->setFileNaming([&path](const CardRecord&) { return path; });
        const QSignalSpy saved(m_desk.get(), &PrintDesk::saved);
        PrintDialog* dialog = openDialog();
        QVERIFY(dialog != nullptr);
        QCOMPARE(dialog->file(), std::optional(path));
        pressPrint(*dialog);
        QTRY_COMPARE(saved.size(), 1);
        QCOMPARE(saved.last().constFirst().toString(), path);
        QVERIFY(contentOf(path).startsWith("%PDF"));
        QVERIFY(!MVSettings::stringPreferencesForKey(m_settings.store(), Settings::lastPrinter));
    }

    void theOptionsDialogOffersTheSameFile()
    {
        const QString path = u"/tmp/chosen.pdf"_s;
        m_desk->setFileNaming([&path](const CardRecord&) { return path; });
        const QPointer<PrinterOptions> options = openOptions();
        QVERIFY(options);
        QCOMPARE(options->file(), std::optional(path));
        QCOMPARE(QApplication::activeModalWidget(), options.get());
        QVERIFY(m_desk->isAsking());
        QTRY_VERIFY(m_window->findChild<PrintDialog*>() == nullptr);
        options->reject();
        QVERIFY(!m_desk->isAsking());
        QTRY_VERIFY(operations().isEmpty());
    }

    void theFileIsPrivateAndComplete()
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

    void aFileThatCannotBeWrittenIsReported()
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

    void failuresAreReportedOneAfterAnother()
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

    void anExistingFileIsReplacedAfterConfirmation()
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

    void closingTheWindowDoesNotReplaceTheFile()
    {
        const QTemporaryDir folder;
        const QString path = existingFile(folder);
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        chooseFile(*dialog, path);
        pressPrint(*dialog);
        QVERIFY(questionIn(*dialog) != nullptr);
        close();
        QVERIFY(!dialog);
        QCOMPARE(contentOf(path), "the user's"_ba);
    }

    void aFolderIsRefused_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("nothing") << u""_s;
        QTest::newRow("folder") << u"/tmp"_s;
        QTest::newRow("folder with its slash") << QTemporaryDir().filePath(u"gone/"_s);
    }

    void aFolderIsRefused()
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

    void theFileHasTheChosenPaperSize()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"page.pdf"_s);
        PrinterOptions* dialog = openOptions();
        QVERIFY(dialog != nullptr);
        chooseFile(*dialog, path);
        // The dialog's page of properties does the same.
        dialog->printer()->setPageSize(QPageSize(QPageSize::A5));
        pressPrint(*dialog);
        QTRY_VERIFY(operations().isEmpty());
        QVERIFY(toolOutput(u"pdfinfo"_s, {path}).contains("Page size:       420 x 595 pts (A5)"));
    }
};

template class RunnableTests<tst_PrintToFile, ApplicationWithoutPrintServer>;
#include "tst_printtofile.moc"
