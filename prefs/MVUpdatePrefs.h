#pragma once

#include "prefs/PaneViewController.h"

#include <QPointer>

#include <memory>

class QLabel;
class SUUpdater;

namespace Ui {
class UpdatePrefsView;
}

/// The pane "Mise à jour": checks for updates, and shows the date of the last check.
class MVUpdatePrefs final : public PaneViewController
{
    Q_OBJECT

public:
    explicit MVUpdatePrefs(Bundle bundle = Bundle::mainBundle());
    ~MVUpdatePrefs() override;

    /// Set before the pane is registered. Not owned; it may be destroyed before the pane.
    [[nodiscard]] SUUpdater* updater() const;
    void setUpdater(SUUpdater* updater);

    void initialization() override;

    void checkForUpdateNow(const QObject* sender);
    /// Shows the updater's date of the last check.
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
