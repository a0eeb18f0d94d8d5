#pragma once

#include "platform/gui/AlertQueue.h"

#include <QPrintDialog>
#include <QString>

class QLineEdit;

/// Qt's print dialog, which first asks whether it may accept what was chosen: accepting waits for the print server, on
/// the interface thread, and replaces files.
class PrintDialog final : public QPrintDialog
{
    Q_OBJECT

public:
    /// The printer must outlive the dialog.
    PrintDialog(QPrinter* printer, QWidget* parent);

    /// The file that a PDF document is to be written to, as it stands in its field.
    [[nodiscard]] QString fileName() const;
    void setFileName(const QString& fileName);

    /// Asks by the signal, and accepts nothing yet.
    void accept() override { Q_EMIT acceptanceWanted(); }

    /// Accepts what was chosen, and closes.
    void acceptNow() { QPrintDialog::accept(); }

    /// Tells over the dialog what went wrong.
    void presentError(const Error& error) { m_alerts.presentError(error); }

Q_SIGNALS:
    void acceptanceWanted();

private:
    QLineEdit* m_file; // Qt's own
    AlertQueue m_alerts;
};
