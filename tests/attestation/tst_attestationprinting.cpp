#include "Fixtures.h"
#include "Tools.h"
#include "attestation/AttestationPrinting.h"
#include "attestation/PrintDialog.h"
#include "attestation/PrintOperation.h"
#include "attestation/SchemeLogos.h"
#include "platform/gui/AlertQueue.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPrinter>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;

// No print server is there: the dialog offers a file alone.
class tst_AttestationPrinting : public QObject
{
    Q_OBJECT

private:
    void print() { printAttestation(specimenCard(2), *m_logos, *m_fonts, *m_alerts, m_window.get()); }

    [[nodiscard]] QList<PrintOperation*> operations() const { return m_window->findChildren<PrintOperation*>(); }
    [[nodiscard]] QMessageBox* alert() const { return m_window->findChild<QMessageBox*>(); }

    PrintDialog* openDialog()
    {
        print();
        const auto dialog = [this] { return m_window->findChild<PrintDialog*>(); };
        return QTest::qWaitFor([&dialog] { return dialog() != nullptr && dialog()->isVisible(); }) ? dialog() : nullptr;
    }

    static QString existingFile(const QTemporaryDir& folder)
    {
        QFile file(folder.filePath(u"page.pdf"_s));
        return file.open(QIODevice::WriteOnly) && file.write("the user's") > 0 ? file.fileName() : QString();
    }

    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
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
        QCOMPARE(dialog->windowModality(), Qt::WindowModal);
        dialog->reject();
        QTRY_VERIFY(!dialog);
        QTRY_VERIFY(operations().isEmpty());
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

    void oneWindowHasOneDialog()
    {
        print();
        print();
        QTRY_COMPARE(m_window->findChildren<PrintDialog*>().size(), 1);
        print();
        QCOMPARE(operations().size(), 1);
        QCOMPARE(m_window->findChildren<PrintDialog*>().size(), 1);
    }

    void twoWindowsHaveADialogEach()
    {
        QVERIFY(openDialog());
        QWidget other;
        AlertQueue alerts(&other);
        printAttestation(specimenCard(1), *m_logos, *m_fonts, alerts, &other);
        QTRY_COMPARE(other.findChildren<PrintDialog*>().size(), 1);
        QCOMPARE(m_window->findChildren<PrintDialog*>().size(), 1);
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
        QTest::newRow("folder with its slash") << u"/nonexistent/"_s;
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
    qputenv("CUPS_SERVER", "/nonexistent/cups.sock");
    const QApplication application(argc, argv);
    tst_AttestationPrinting test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_attestationprinting.moc"
