#pragma once

#include "prefs/PaneViewController.h"

#include <QPointer>

#include <memory>

class QLabel;
class SUUpdater;

namespace Ui {
class UpdatePrefsView;
}

/// The pane "Mise à jour": a check for updates, and when the last one was made.
class MVUpdatePrefs final : public PaneViewController
{
    Q_OBJECT

public:
    explicit MVUpdatePrefs(Bundle bundle = Bundle::mainBundle());
    ~MVUpdatePrefs() override;

    /// Given before the pane is registered; not owned, and may go before the pane.
    [[nodiscard]] SUUpdater* updater() const;
    void setUpdater(SUUpdater* updater);

    [[nodiscard]] QString paneIdentifier() const override;
    [[nodiscard]] QString paneName() const override;
    void initialization() override;
    void paneWillAppear() override;

    void checkForUpdateNow(const QObject* sender);
    /// Shows when the last check was made, as the updater knows it now.
    void updateUI();

    /// Null before the view is loaded.
    [[nodiscard]] QLabel* lastCheckTextField() const;

protected:
    void loadView(QScrollArea& view) override;
    void viewDidLoad() override;

private:
    QPointer<SUUpdater> m_updater;
    std::unique_ptr<Ui::UpdatePrefsView> m_ui;
};
