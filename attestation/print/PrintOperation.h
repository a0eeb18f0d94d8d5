#pragma once

#include "attestation/page/AttestationPage.h"
#include "attestation/page/PrintInfo.h"
#include "platform/files/WriteFailure.h"
#include "platform/print/PrintServer.h"

#include <QObject>
#include <QPointer>
#include <QPrinter>

#include <expected>
#include <functional>
#include <memory>
#include <optional>

class AlertQueue;
class PageFonts;
class PrintDialog;
class PrinterSearch;
class PrintQuestion;
class QDialog;
class QWidget;
class SavingSheet;
class WithoutPrintServer;

/// One print from a window: asks which queues there are, opens the print dialog on the window, and hands the page to
/// the queue that is chosen, or writes it to the file. What fails is told over the dialog, or by the window's alerts
/// once that has closed. It deletes itself at its end. Main thread only.
class PrintOperation final : public QObject
{
    Q_OBJECT

public:
    /// What the user has settled before.
    struct Preset
    {
        QString queue; ///< chosen first; empty for the user's default one
        bool isWithoutAsking =
            false;    ///< prints one copy there at once; asks all the same when the queue does not exist
        QString file; ///< offered when the page is to go to a file
    };

    /// The fonts, the alerts and the window must outlive it.
    PrintOperation(AttestationPage page, Preset preset, const PageFonts& fonts, const QString& printHelper,
                   AlertQueue& alerts, QWidget* window);
    /// A job that is on its way arrives first, unless the print server has stopped answering.
    ~PrintOperation() override;
    Q_DISABLE_COPY_MOVE(PrintOperation)

    /// Whether the question to the user, how to print, is still to be answered: from the beginning to the dialog's end.
    [[nodiscard]] bool isAsking() const { return m_asking; }

    /// Brings to the front what asks: the dialog, or the window that says that the printers are searched.
    void bringToFront();

    void run();

Q_SIGNALS:
    /// The queue has the page.
    void sent(const QString& queue);
    /// The page is in the file.
    void saved(const QString& path);

private:
    void cancel();
    void queuesAreKnown(const PrintAnswer& queues);
    [[nodiscard]] bool printWithoutAsking();
    void openDialog();
    void openOptions(const PrintDialog& chosen);
    template <typename Dialog>
    void show(Dialog* dialog);
    void whenServerAnswers(std::function<void()> proceed);
    void accept();
    void acceptFile(const QString& path);
    void askToReplace(const QString& path);
    void printChosen();
    void print(const PrintInfo& info, const std::optional<QString>& file);
    void writeFile(const QString& path, const QByteArray& pdf);
    void fileIsWritten(const QString& path, const std::expected<void, WriteFailure>& written);
    void fail(const Error& error);

    AttestationPage m_page;
    Preset m_preset;
    const PageFonts& m_fonts;
    AlertQueue& m_alerts;
    QWidget* m_window;
    bool m_asking = true;
    PrintServer m_server;
    QList<PrintQueue> m_queues;
    std::unique_ptr<WithoutPrintServer> m_isolation;
    std::unique_ptr<QPrinter> m_printer; // of Qt's dialog
    QPointer<PrinterSearch> m_search;
    QPointer<QDialog> m_dialog;
    PrintQuestion* m_question = nullptr; // the dialog
    QPointer<SavingSheet> m_savingSheet;
};
