#include "Fixtures.h"
#include "Tools.h"
#include "attestation/AttestationPrinting.h"
#include "attestation/PrintDialog.h"
#include "attestation/PrintOperation.h"
#include "attestation/SchemeLogos.h"

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;

// No print server is there: the dialog offers a file alone.
class tst_AttestationPrinting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_fonts.emplace(pageFonts());
        m_logos = std::make_unique<SchemeLogos>(stagedBundle());
    }

    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void cleanup() { m_window.reset(); }

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
        printAttestation(specimenCard(1), *m_logos, *m_fonts, &other);
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
        dialog->accept();
        QTRY_VERIFY(operations().isEmpty());
        QCOMPARE(QFile::permissions(path) & ~(QFile::ReadUser | QFile::WriteUser),
                 QFile::ReadOwner | QFile::WriteOwner);
        QVERIFY(toolOutput(u"pdftotext"_s, {path, u"-"_s}).contains("SPECIMEN Marie"));
    }

    void aFileThatCannotBeWrittenIsTold()
    {
        PrintDialog* dialog = openDialog();
        QVERIFY(dialog != nullptr);
        // Qt's dialog lets it pass, as it may be made.
        chooseFile(*dialog, u"/proc/page.pdf"_s);
        dialog->accept();
        QTRY_VERIFY(alert() != nullptr);
        QVERIFY(alert()->text().startsWith(u"« /proc/page.pdf » n’a pas été enregistré : "_s));
        alert()->accept();
        QTRY_VERIFY(operations().isEmpty());
    }

    void theWindowMayGoWhileItsDialogIsOpen()
    {
        const QPointer<PrintDialog> dialog = openDialog();
        QVERIFY(dialog);
        m_window.reset();
        QVERIFY(!dialog);
    }

    void theWindowMayGoBeforeItsDialogOpens()
    {
        print();
        m_window.reset();
        QCoreApplication::processEvents();
    }

private:
    void print() { printAttestation(specimenCard(2), *m_logos, *m_fonts, m_window.get()); }

    [[nodiscard]] QList<PrintOperation*> operations() const { return m_window->findChildren<PrintOperation*>(); }
    [[nodiscard]] QMessageBox* alert() const { return m_window->findChild<QMessageBox*>(); }

    PrintDialog* openDialog()
    {
        print();
        const auto dialog = [this] { return m_window->findChild<PrintDialog*>(); };
        return QTest::qWaitFor([&dialog] { return dialog() != nullptr && dialog()->isVisible(); }) ? dialog() : nullptr;
    }

    static void chooseFile(const PrintDialog& dialog, const QString& path)
    {
        dialog.findChild<QLineEdit*>(u"filename"_s)->setText(path);
    }

    TemporarySettings m_settings;
    std::optional<PageFonts> m_fonts;
    std::unique_ptr<SchemeLogos> m_logos;
    std::unique_ptr<QWidget> m_window;
};

int main(int argc, char** argv)
{
    qputenv("CUPS_SERVER", "/nonexistent/cups.sock");
    const QApplication application(argc, argv);
    tst_AttestationPrinting test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_attestationprinting.moc"
