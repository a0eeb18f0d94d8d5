#pragma once

#include <QDialog>
#include <QTimer>

#include <chrono>

class QLabel;

/// The sheet over a window while a file is being written, shown when that takes longer than usual. Escape and the close
/// button do nothing. Main thread only.
class SavingSheet final : public QDialog
{
    Q_OBJECT

public:
    /// A write usually takes a few hundredths of a second.
    static constexpr std::chrono::milliseconds usualPatience{300};

    explicit SavingSheet(QWidget* window, std::chrono::milliseconds patience = usualPatience);

    /// A write has started: after the usual time the sheet is shown, with its window if that is hidden.
    void begin();
    void end();
    /// Says at once that the program ends after the write.
    void announceLeaving();

    /// Does nothing: a write cannot be cancelled.
    void reject() override;

private:
    void showOverWindow();

    QLabel* m_message;
    QTimer m_timer;
};
