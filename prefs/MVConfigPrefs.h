#pragma once

#include "prefs/PaneViewController.h"

#include <memory>

class QCheckBox;
class StatusItemControl;
class UserDefaults;

namespace Ui {
class ConfigView;
}

/// The pane "Configuration": whether the status item is shown, when a shown card is forgotten, whether recent
/// attestations are kept, and the debug mode of this run, which is visible when Alt is held down while the pane opens.
class MVConfigPrefs final : public PaneViewController
{
    Q_OBJECT

public:
    /// The settings and the status item's control must outlive the pane.
    MVConfigPrefs(UserDefaults& settings, StatusItemControl& statusItem, Bundle bundle = Bundle::mainBundle());
    ~MVConfigPrefs() override;

    void initialization() override;
    void paneWillAppear() override;

    /// The status item's check box was switched and has stored its setting. Other senders are ignored.
    void changeStatusItemPrefs(const QObject* sender);
    /// Does nothing: the check box has stored its setting.
    void changeDebugMode(const QObject* sender);

    /// Null before the view is loaded.
    [[nodiscard]] QCheckBox* debugModeButton() const;

Q_SIGNALS:
    /// When the shown card is forgotten, or whether recent attestations are kept, was changed and stored.
    void forgettingChanged();

protected:
    void loadView(QScrollArea& view) override;
    void viewDidLoad() override;

private:
    UserDefaults& m_settings;
    StatusItemControl& m_statusItem;
    std::unique_ptr<Ui::ConfigView> m_ui;
};
