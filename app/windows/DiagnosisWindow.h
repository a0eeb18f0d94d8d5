#pragma once

#include <QDialog>
#include <QProcess>

class QLabel;
class QPlainTextEdit;
class QPushButton;

/// Shows what the diagnosis of the card readers says. It is made by another program, which ends with the window; until
/// then the window says that it is being made. It contains no data of cards. Main thread only.
class DiagnosisWindow final : public QDialog
{
    Q_OBJECT

public:
    /// The program with its argument first; its environment as "NAME=value".
    DiagnosisWindow(const QStringList& command, const QStringList& environment, QWidget* parent);
    Q_DISABLE_COPY_MOVE(DiagnosisWindow)
    ~DiagnosisWindow() override;

    /// The shown window over that one, which comes to the front if it is open.
    static void showOver(QWidget& window, const QStringList& command, const QStringList& environment);

private:
    void setUpControls();
    void showText(const QString& text);
    void showFailure();
    void copy();
    void chooseFile();
    void save(const QString& path);

    QProcess m_program;
    QLabel* m_state = nullptr;
    QPlainTextEdit* m_text = nullptr;
    QPushButton* m_copyButton = nullptr;
    QPushButton* m_saveButton = nullptr;
};
