#pragma once

#include "attestation/page/SchemeLogos.h"
#include "attestation/print/PrintDesk.h"
#include "attestation/print/PrintDialog.h"
#include "attestation/print/PrintOperation.h"
#include "attestation/print/PrinterOptions.h"
#include "platform/gui/AlertQueue.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/Files.h"
#include "tests/common/TestCase.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <optional>

/// A window that prints, for tests of printing. The test calls open() before each function and close() after it.
class PrintingWindow
{
public:
    [[nodiscard]] bool open()
    {
        useHelper(stagedBundle().pathForProgram(QStringLiteral("pelmora-print")));
        m_window = std::make_unique<QWidget>();
        m_alerts = std::make_unique<AlertQueue>(m_window.get());
        m_window->show();
        return QTest::qWaitForWindowExposed(m_window.get());
    }

    void close()
    {
        m_alerts.reset();
        m_window.reset();
    }

    void useHelper(const QString& program)
    {
        m_desk = std::make_unique<PrintDesk>(m_settings.store(), m_logos, m_fonts, program);
    }

    void print() { m_desk->print(specimenCard(2), *m_alerts, *m_window); }

    [[nodiscard]] QList<PrintOperation*> operations() const { return m_window->findChildren<PrintOperation*>(); }
    [[nodiscard]] QMessageBox* alert() const { return m_window->findChild<QMessageBox*>(); }

    [[nodiscard]] PrintDialog* openDialog()
    {
        print();
        const auto dialog = [this] { return m_window->findChild<PrintDialog*>(); };
        return QTest::qWaitFor([&dialog] { return dialog() != nullptr && dialog()->isVisible(); }) ? dialog() : nullptr;
    }

    /// Opens Qt's dialog in place of the small one.
    [[nodiscard]] PrinterOptions* openOptions()
    {
        const PrintDialog* dialog = openDialog();
        if (dialog == nullptr)
            return nullptr;
        for (QPushButton* button : dialog->findChildren<QPushButton*>()) {
            if (button->text() == QStringLiteral("&Options…"))
                button->click();
        }
        const auto options = [this] { return m_window->findChild<PrinterOptions*>(); };
        return QTest::qWaitFor([&options] { return options() != nullptr && options()->isVisible(); }) ? options()
                                                                                                      : nullptr;
    }

    [[nodiscard]] static QString existingFile(const QTemporaryDir& folder)
    {
        const QString path = folder.filePath(QStringLiteral("page.pdf"));
        return writeFile(path, "the user's") ? path : QString();
    }

    static void pressPrint(const QDialog& dialog)
    {
        dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
    }

    [[nodiscard]] static QMessageBox* questionIn(const QDialog& dialog) { return dialog.findChild<QMessageBox*>(); }

    static void press(const QMessageBox& box, const QString& name)
    {
        for (QAbstractButton* button : box.buttons()) {
            if (button->text() == name)
                button->click();
        }
    }

    static void chooseFile(const QDialog& dialog, const QString& path)
    {
        dialog.findChild<QLineEdit*>(QStringLiteral("filename"))->setText(path);
    }

protected:
    std::unique_ptr<PrintDesk> m_desk;
    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<AlertQueue> m_alerts;

    TemporarySettings m_settings;

private:
    PageFonts m_fonts = pageFonts();
    SchemeLogos m_logos{stagedBundle()};
};

/// An environment without a print server: the dialog offers only a file.
class ApplicationWithoutPrintServer
{
public:
    ApplicationWithoutPrintServer(int& argc, char** argv)
        : m_application(withoutServer(argc), argv)
    {
    }

private:
    int& withoutServer(int& argc) const
    {
        qputenv("CUPS_SERVER", QFile::encodeName(m_folder.filePath(QStringLiteral("cups.sock"))));
        return argc;
    }

    QTemporaryDir m_folder;
    QApplication m_application;
};
