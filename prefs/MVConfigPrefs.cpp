#include "prefs/MVConfigPrefs.h"

#include "prefs/SettingTie.h"
#include "prefs/StatusItemControl.h"
#include "prefs/settings/MVSettings.h"
#include "prefs/ui_ConfigView.h"
#include "support/MXLog.h"

#include <QGuiApplication>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

// A partially checked box is not on.
bool isOn(const QAbstractButton& button)
{
    const auto* box = qobject_cast<const QCheckBox*>(&button);
    return box ? box->checkState() == Qt::Checked : button.isChecked();
}

} // namespace

MVConfigPrefs::MVConfigPrefs(UserDefaults& settings, StatusItemControl& statusItem, Bundle bundle)
    : PaneViewController({u"com.morvel.prefspane.config"_s, u"Configuration"_s, u"Config"_s}, std::move(bundle))
    , m_settings(settings)
    , m_statusItem(statusItem)
{
}

MVConfigPrefs::~MVConfigPrefs() = default;

void MVConfigPrefs::initialization()
{
    view();
}

void MVConfigPrefs::paneWillAppear()
{
    MXLog::logDebug("paneWillAppear");
    view();
    // queryKeyboardModifiers(): assistive technology opens panes without a keyboard event.
    const bool altIsDown = QGuiApplication::queryKeyboardModifiers().testFlag(Qt::AltModifier);
    const bool isVisible = altIsDown || MVSettings::booleanPreferencesForKey(m_settings, Settings::debugMode);
    debugModeButton()->setVisible(isVisible);
    m_ui->debugModeLabel->setVisible(isVisible);
    m_ui->debugModeHint->setVisible(isVisible);
}

void MVConfigPrefs::changeStatusItemPrefs(const QObject* sender)
{
    const auto* button = qobject_cast<const QAbstractButton*>(sender);
    if (!button)
        return;
    if (isOn(*button))
        m_statusItem.showStatusItem();
    else
        m_statusItem.hideStatusItem();
}

void MVConfigPrefs::changeDebugMode(const QObject* /*sender*/)
{
}

QCheckBox* MVConfigPrefs::debugModeButton() const
{
    return m_ui ? m_ui->debugModeButton : nullptr;
}

void MVConfigPrefs::loadView(QScrollArea& view)
{
    m_ui = std::make_unique<Ui::ConfigView>();
    m_ui->setupUi(&view);
}

void MVConfigPrefs::viewDidLoad()
{
    // The ties come first, so that the setting is stored before the actions run.
    tieToSetting(*m_ui->statusItemButton, m_settings, Settings::statusItemMenu);
    tieToSetting(*m_ui->debugModeButton, m_settings, Settings::debugMode);
    tieToSetting(*m_ui->forgetOnRemovalButton, m_settings, Settings::forgetOnRemoval);
    tieToSetting(*m_ui->forgetOnLockButton, m_settings, Settings::forgetOnLock);
    tieToSetting(*m_ui->forgetRecentsButton, m_settings, Settings::forgetRecents);
    tieToSetting(*m_ui->forgetMinutesField, m_settings, Settings::forgetAfterMinutes);
    for (const QAbstractButton* button :
         {m_ui->forgetOnRemovalButton, m_ui->forgetOnLockButton, m_ui->forgetRecentsButton})
        connect(button, &QAbstractButton::toggled, this, &MVConfigPrefs::forgettingChanged);
    connect(m_ui->forgetMinutesField, &QSpinBox::valueChanged, this, &MVConfigPrefs::forgettingChanged);
    // toggled(): assistive technology does not always send clicked().
    connect(m_ui->statusItemButton, &QAbstractButton::toggled, this,
            [this] { changeStatusItemPrefs(m_ui->statusItemButton); });
    connect(m_ui->debugModeButton, &QAbstractButton::toggled, this, [this] { changeDebugMode(debugModeButton()); });
}
