#pragma once

#include "prefs/PaneViewController.h"

#include <memory>

class QCheckBox;
class StatusItemControl;
class UserDefaults;

namespace Ui {
class ConfigView;
}

/// The pane "Configuration": whether the status item is shown and, for those who hold Alt down when they open the pane,
/// the debug mode of this run.
class MVConfigPrefs final : public PaneViewController
{
    Q_OBJECT

public:
    /// The settings and the status item's control must outlive the pane's use.
    MVConfigPrefs(UserDefaults& settings, StatusItemControl& statusItem, Bundle bundle = Bundle::mainBundle());
    ~MVConfigPrefs() override;

    [[nodiscard]] QString paneIdentifier() const override;
    [[nodiscard]] QString paneName() const override;
    void initialization() override;
    void paneWillAppear() override;

    /// The check box of the status item was switched. Its setting is stored by then. Other senders are ignored.
    void changeStatusItemPrefs(const QObject* sender);
    /// Nothing is left to do: the check box has stored its setting.
    void changeDebugMode(const QObject* sender);

    /// Null before the view is loaded.
    [[nodiscard]] QCheckBox* debugModeButton() const;

protected:
    void loadView(QScrollArea& view) override;
    void viewDidLoad() override;

private:
    UserDefaults& m_settings;
    StatusItemControl& m_statusItem;
    std::unique_ptr<Ui::ConfigView> m_ui;
};
