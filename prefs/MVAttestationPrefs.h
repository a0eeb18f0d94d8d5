#pragma once

#include "prefs/PaneViewController.h"

#include <memory>

class QFileDialog;
class UserDefaults;

namespace Ui {
class AttestationConfigView;
}

/// The pane "Attestations": their folder, whether their title is drawn, and whether printing asks.
class MVAttestationPrefs final : public PaneViewController
{
    Q_OBJECT

public:
    /// The settings must outlive the pane.
    explicit MVAttestationPrefs(UserDefaults& settings, Bundle bundle = Bundle::mainBundle());
    ~MVAttestationPrefs() override;

    /// Lets the user choose the folder in a panel over the pane's window; does nothing without a window.
    void changeAttestationsFolder(const QObject* sender);

protected:
    void loadView(QScrollArea& view) override;
    void viewDidLoad() override;

private:
    void storeFolder(const QFileDialog& panel);
    void showFolder();

    UserDefaults& m_settings;
    std::unique_ptr<Ui::AttestationConfigView> m_ui;
};
