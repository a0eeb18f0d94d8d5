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

/// The pane "Lecture Vitale": the reading library of the card service, and its versions.
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

    void initialization() override;
    void paneWillAppear() override;

    /// The user has chosen a mode: stores it and binds the card service again.
    void changeMode(const QObject* sender);
    /// Shows the client's access mode in the menu.
    void updatePopUp();
    /// Shows the explanation of the menu's mode.
    void updateModeInformations();
    void clearLibraryInformations();
    /// Shows the client's versions, if it has any.
    void updateLibraryInformations();

    [[nodiscard]] const QString& modeInformations() const { return m_modeInformations; }
    void setModeInformations(const QString& text);

    // Controls of the view; null before it is loaded. The data of the menu's entries are their tags.
    [[nodiscard]] ModeMenu* selectModePopUpButton() const;
    [[nodiscard]] QLabel* infosTestField() const;
    [[nodiscard]] QLabel* apiVersionTextField() const;
    [[nodiscard]] QLabel* tablebinVersionTextField() const;
    [[nodiscard]] QLabel* pdtcdcVersionTextField() const;
    [[nodiscard]] QLabel* tablehabVersionTextField() const;
    [[nodiscard]] QGroupBox* informationsBox() const;

Q_SIGNALS:
    void modeInformationsChanged(const QString& text);
    /// The diagnosis is to be shown over that window.
    void diagnosisRequested(QWidget* window);

protected:
    void loadView(QScrollArea& view) override;
    void viewDidLoad() override;

private:
    void fetchLibraryInformations();
    [[nodiscard]] qint64 selectedTag();
    /// Loads the view if needed.
    [[nodiscard]] Ui::LVitAccessView& ui();

    UserDefaults& m_settings;
    std::shared_ptr<LVitAccess> m_client;
    QString m_modeInformations = QStringLiteral("");
    std::unique_ptr<Ui::LVitAccessView> m_ui;
};
