#pragma once

#include "card/client/LVitAccess.h"
#include "prefs/PaneViewController.h"

#include <memory>

class ModeMenu;
class QGroupBox;
class QLabel;
class UserDefaults;

namespace Ui {
class LVitAccessView;
}

/// The pane "Lecture Vitale": which reading library the card service uses, and the versions that it reports.
class LVitAccessPrefs final : public PaneViewController
{
    Q_OBJECT
    Q_PROPERTY(QString modeInformations READ modeInformations WRITE setModeInformations NOTIFY modeInformationsChanged)

public:
    /// The settings must outlive the pane.
    explicit LVitAccessPrefs(UserDefaults& settings, std::shared_ptr<LVitAccess> client = LVitAccess::defaultInstance(),
                             Bundle bundle = Bundle::mainBundle());
    LVitAccessPrefs(const LVitAccessPrefs&) = delete;
    LVitAccessPrefs& operator=(const LVitAccessPrefs&) = delete;
    ~LVitAccessPrefs() override;

    [[nodiscard]] QString paneIdentifier() const override;
    [[nodiscard]] QString paneName() const override;
    void initialization() override;
    void paneWillAppear() override;

    /// The user has picked a mode: it is stored, and the card service is bound with it.
    void changeMode(const QObject* sender);
    /// Selects the client's access mode in the menu.
    void updatePopUp();
    /// Explains the menu's mode.
    void updateModeInformations();
    void clearLibraryInformations();
    /// Shows the versions that the client knows; changes nothing while it knows none.
    void updateLibraryInformations();

    /// The explanation of the selected mode.
    [[nodiscard]] const QString& modeInformations() const { return m_modeInformations; }
    void setModeInformations(const QString& text);

    // Controls of the view, null before it is loaded. The menu's entries have their tags as data.
    [[nodiscard]] ModeMenu* selectModePopUpButton() const;
    [[nodiscard]] QLabel* infosTestField() const;
    [[nodiscard]] QLabel* apiVersionTextField() const;
    [[nodiscard]] QLabel* tablebinVersionTextField() const;
    [[nodiscard]] QLabel* pdtcdcVersionTextField() const;
    [[nodiscard]] QLabel* tablehabVersionTextField() const;
    [[nodiscard]] QGroupBox* informationsBox() const;

Q_SIGNALS:
    void modeInformationsChanged(const QString& text);

protected:
    void loadView(QScrollArea& view) override;
    void viewDidLoad() override;

private:
    void fetchLibraryInformations();
    [[nodiscard]] qint64 selectedTag();
    /// The controls; loads the view if need be.
    [[nodiscard]] Ui::LVitAccessView& ui();

    UserDefaults& m_settings;
    std::shared_ptr<LVitAccess> m_client;
    QString m_modeInformations = QStringLiteral("");
    std::unique_ptr<Ui::LVitAccessView> m_ui;
};
