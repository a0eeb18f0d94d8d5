#pragma once

#include <QDialog>
#include <QString>

#include <memory>

class UpdateSession;

namespace Ui {
class UpdateWindow;
}

/// Shows a search for an update, and lets the user choose: download, later, or never this version. The session must
/// outlive it. Opened with show(); closing it in any way finishes the dialog. Main thread.
class UpdateWindow final : public QDialog
{
    Q_OBJECT

public:
    explicit UpdateWindow(UpdateSession& session);
    ~UpdateWindow() override;

    /// Whether the desktop opened the package.
    void setTakenByDesktop(bool isTaken);

Q_SIGNALS:
    /// The user skips the session's version.
    void skipRequested();

private:
    void updateUI();
    void fitHeight();
    void showProgress(qint64 received);
    void cancel();
    [[nodiscard]] QString headline() const;
    [[nodiscard]] QString detail() const;
    [[nodiscard]] QString versionName() const;

    UpdateSession& m_session;
    std::unique_ptr<Ui::UpdateWindow> m_ui;
    bool m_isTaken = true;
};
