#pragma once

#include <QDialog>
#include <QTimer>

#include <chrono>

class QLabel;

/// The sheet that says over its window that a file is being written, once that takes longer than usual. It goes when
/// the write has ended: neither Escape nor its close button end a write. Main thread only.
class SavingSheet final : public QDialog
{
    Q_OBJECT

public:
    /// A file is written in a few hundredths of a second.
    static constexpr std::chrono::milliseconds usualPatience{300};

    explicit SavingSheet(QWidget* window, std::chrono::milliseconds patience = usualPatience);

    /// A write has begun: the sheet comes when the patience is over, and brings a window back that is not to be seen.
    void begin();
    /// The write has ended.
    void end();
    /// The program is left once the write has ended: says so, at once.
    void announceLeaving();

    /// Nothing: a write goes on until it ends.
    void reject() override;

private:
    void showOverWindow();

    QLabel* m_message;
    QTimer m_timer;
};
