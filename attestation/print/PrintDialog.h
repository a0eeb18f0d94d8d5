#pragma once

#include "attestation/print/PrintQuestion.h"
#include "platform/gui/AlertQueue.h"

#include <QDialog>

class QComboBox;
class QFormLayout;
class QLineEdit;
class QSpinBox;

/// The print dialog: the printer and the number of copies, or a file. The printer's other settings are behind a button.
/// It does not ask the print server. Main thread only.
class PrintDialog final : public QDialog, public PrintQuestion
{
    Q_OBJECT

public:
    /// What is offered. Without a queue of that name, the default one is chosen; without queues, the file.
    struct Offer
    {
        QList<PrintQueue> queues;
        QString queue;
        QString file;
    };

    PrintDialog(Offer offer, QWidget* parent);

    [[nodiscard]] PrintInfo info() const override;
    [[nodiscard]] std::optional<QString> file() const override;
    [[nodiscard]] int copies() const;

    /// Asks by the signal, and accepts nothing yet.
    void accept() override { Q_EMIT acceptanceWanted(); }
    void acceptNow() override { QDialog::accept(); }
    void presentError(const Error& error) override { m_alerts.presentError(error); }

Q_SIGNALS:
    void acceptanceWanted();
    /// The other settings are wanted.
    void optionsWanted();

private:
    void offerQueues();
    void addFields(QFormLayout& form);
    void showFields();
    void chooseFile();
    [[nodiscard]] bool isFileChosen() const;

    Offer m_offer;
    QComboBox* m_printers; // the queues, then the file
    QSpinBox* m_copies;
    QWidget* m_fileRow;
    QLineEdit* m_file;
    AlertQueue m_alerts;
};
