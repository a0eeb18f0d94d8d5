#pragma once

#include "attestation/print/PrintQuestion.h"
#include "platform/gui/AlertQueue.h"

#include <QPrintDialog>

class QLineEdit;

/// Qt's print dialog, with every setting of the printers. It first asks whether it may accept what was chosen:
/// accepting waits for the print server, on the interface thread, and replaces files.
class PrinterOptions final : public QPrintDialog, public PrintQuestion
{
    Q_OBJECT

public:
    /// The printer must outlive the dialog. Its queue is chosen first; each queue keeps its own paper.
    PrinterOptions(QPrinter* printer, QList<PrintQueue> queues, QWidget* parent);

    [[nodiscard]] PrintInfo info() const override;
    [[nodiscard]] std::optional<QString> file() const override;

    /// Asks by the signal, and accepts nothing yet.
    void accept() override { Q_EMIT acceptanceWanted(); }
    void acceptNow() override { QPrintDialog::accept(); }
    void presentError(const Error& error) override { m_alerts.presentError(error); }

Q_SIGNALS:
    void acceptanceWanted();

private:
    [[nodiscard]] PrintInfo defaultsOfChosenQueue() const;
    void adoptQueue();

    QList<PrintQueue> m_queues;
    QLineEdit* m_file; // Qt's own
    AlertQueue m_alerts;
};
