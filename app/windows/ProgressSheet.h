#pragma once

#include <QDialog>

#include <chrono>
#include <memory>

class ProgressIndicator;
class QLabel;
class QPushButton;
class QTimer;

namespace Ui {
class ProgressSheet;
}

/// The sheet over a window while a card is read. Only end() closes it. When the read takes long, the sheet says so and
/// offers to cancel; before that Escape and closing do nothing. Main thread only.
class ProgressSheet final : public QDialog
{
    Q_OBJECT

public:
    /// A read usually takes a second or two.
    static constexpr std::chrono::milliseconds usualPatience{5000};

    explicit ProgressSheet(QWidget* window, std::chrono::milliseconds patience = usualPatience);
    ~ProgressSheet() override;

    /// Shows the sheet with that message, or changes the message.
    void begin(const QString& message);
    /// Closes the sheet if it is open.
    void end();

    // Outlets.
    [[nodiscard]] QLabel* informationsTextField() const;
    [[nodiscard]] QLabel* patienceLabel() const;
    [[nodiscard]] ProgressIndicator* progressIndicator() const;
    [[nodiscard]] QPushButton* cancelButton() const;

    /// Like the cancel button, once that is shown.
    void reject() override;

Q_SIGNALS:
    /// The read is to be cancelled; the sheet stays until end().
    void cancelRequested();

private:
    void askForPatience();
    void hidePatience();

    std::unique_ptr<Ui::ProgressSheet> m_ui;
    std::unique_ptr<QTimer> m_timer;
};
