#include "prefs/SettingTie.h"

#include "prefs/settings/MVSettings.h"

#include <QAbstractButton>
#include <QEvent>
#include <QSignalBlocker>

namespace {

class SettingTie final : public QObject
{
public:
    SettingTie(QAbstractButton& button, UserDefaults& store, const Setting<bool>& setting)
        : QObject(&button)
        , m_button(button)
        , m_store(store)
        , m_setting(setting)
    {
        showStored();
        button.installEventFilter(this);
        connect(&button, &QAbstractButton::toggled, this,
                [this](bool on) { MVSettings::setPreferencesWithBooleanValue(m_store, m_setting, on); });
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show)
            showStored();
        return QObject::eventFilter(watched, event);
    }

private:
    void showStored()
    {
        // Not a change by the user: stores nothing and runs no action.
        const QSignalBlocker quiet(m_button);
        m_button.setChecked(MVSettings::booleanPreferencesForKey(m_store, m_setting));
    }

    QAbstractButton& m_button;
    UserDefaults& m_store;
    Setting<bool> m_setting;
};

} // namespace

void tieToSetting(QAbstractButton& button, UserDefaults& store, const Setting<bool>& setting)
{
    new SettingTie(button, store, setting); // owned by the button
}
