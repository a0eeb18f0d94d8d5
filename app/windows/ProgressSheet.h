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

/// The sheet that is shown over its window while a card is read. Only who put it up takes it down. When the read takes
/// long it says so, and offers to cancel it; until then neither Escape nor closing do anything. Main thread only.
class ProgressSheet final : public QDialog
{
    Q_OBJECT

public:
    /// A card is read in a second or two: from here on people wonder.
    static constexpr std::chrono::milliseconds usualPatience{5000};

    explicit ProgressSheet(QWidget* window, std::chrono::milliseconds patience = usualPatience);
    ~ProgressSheet() override;

    /// Shows the sheet with exactly that message. A sheet that is up gets the new message.
    void begin(const QString& message);
    /// Takes the sheet down; nothing when it is not up.
    void end();

    // The outlets.
    [[nodiscard]] QLabel* informationsTextField() const;
    [[nodiscard]] QLabel* patienceLabel() const;
    [[nodiscard]] ProgressIndicator* progressIndicator() const;
    [[nodiscard]] QPushButton* cancelButton() const;

    /// Asks for the end of the read, as the button does, once that is offered.
    void reject() override;

Q_SIGNALS:
    /// The user wants the read to end; the sheet stays until it is taken down.
    void cancelRequested();

private:
    void askForPatience();
    void hidePatience();

    std::unique_ptr<Ui::ProgressSheet> m_ui;
    std::unique_ptr<QTimer> m_timer;
};
