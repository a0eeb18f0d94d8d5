#pragma once

#include <QPrintDialog>

/// Qt's print dialog, which first asks whether it may accept what was chosen: accepting waits for the print server, on
/// the interface thread.
class PrintDialog final : public QPrintDialog
{
    Q_OBJECT

public:
    using QPrintDialog::QPrintDialog;

    /// Asks by the signal, and accepts nothing yet.
    void accept() override { Q_EMIT acceptanceWanted(); }

    /// Accepts what was chosen and closes, unless Qt finds something wrong with it and says so.
    void acceptNow() { QPrintDialog::accept(); }

Q_SIGNALS:
    void acceptanceWanted();
};
