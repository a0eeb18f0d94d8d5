#pragma once

#include "attestation/page/AttestationPage.h"
#include "attestation/page/PrintInfo.h"
#include "platform/files/WriteFailure.h"
#include "platform/print/PrintServer.h"

#include <QObject>
#include <QPointer>
#include <QPrinter>

#include <expected>
#include <memory>

class AlertQueue;
class PageFonts;
class PrintDialog;
class PrinterSearch;
class QWidget;
class SavingSheet;
class WithoutPrintServer;

/// One print from a window: asks which queues there are, opens the print dialog on the window, and hands the page to
/// the queue that is chosen, or writes it to the file. What fails is told over the dialog, or by the window's alerts
/// once that has closed. It deletes itself at its end. Main thread only; the fonts, the alerts and the window must
/// outlive it.
class PrintOperation final : public QObject
{
    Q_OBJECT

public:
    PrintOperation(AttestationPage page, const PageFonts& fonts, const QString& printHelper, AlertQueue& alerts,
                   QWidget* window);
    /// A job that is on its way arrives first, unless the print server has stopped answering.
    ~PrintOperation() override;
    Q_DISABLE_COPY_MOVE(PrintOperation)

    /// Whether the question to the user, how to print, is still to be answered: from the beginning to the dialog's end.
    [[nodiscard]] bool isAsking() const { return m_asking; }

    /// Brings to the front what asks: the dialog, or the window that says that the printers are searched.
    void bringToFront();

    void run();

private:
    void cancel();
    void queuesAreKnown(const PrintAnswer& queues);
    void openDialog();
    void offerFile();
    void adoptQueue();
    void accept();
    void acceptFile();
    void askToReplace(const QString& path);
    void acceptPrinter();
    void print();
    void writeFile(const QByteArray& pdf);
    void fileIsWritten(const QString& path, const std::expected<void, WriteFailure>& written);
    [[nodiscard]] PrintInfo chosenInfo() const;
    [[nodiscard]] PrintInfo defaultsOfChosenQueue() const;
    void finish(const PrintAnswer& outcome);

    AttestationPage m_page;
    const PageFonts& m_fonts;
    AlertQueue& m_alerts;
    QWidget* m_window;
    bool m_asking = true;
    PrintServer m_server;
    QList<PrintQueue> m_queues;
    std::unique_ptr<WithoutPrintServer> m_isolation;
    std::unique_ptr<QPrinter> m_printer;
    QPointer<PrinterSearch> m_search;
    QPointer<PrintDialog> m_dialog;
    QPointer<SavingSheet> m_savingSheet;
};
