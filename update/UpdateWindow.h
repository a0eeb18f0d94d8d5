#pragma once

#include <QDialog>
#include <QString>

#include <memory>

class UpdateSession;

namespace Ui {
class UpdateWindow;
}

/// Shows a search for an update and lets the user decide: download, later, never this version. It follows the session,
/// which must outlive it. Opened with show(); closing it, by whatever way, finishes the dialog. Main thread.
class UpdateWindow final : public QDialog
{
    Q_OBJECT

public:
    explicit UpdateWindow(UpdateSession& session);
    ~UpdateWindow() override;

    /// What became of the package that is ready: whether the desktop took it.
    void setTakenByDesktop(bool isTaken);

Q_SIGNALS:
    /// The user does not want to hear of the session's version again.
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
