#include "prefs/SettingTie.h"

#include "prefs/settings/MVSettings.h"

#include <QAbstractButton>
#include <QEvent>
#include <QSignalBlocker>

namespace {

class SettingTie final : public QObject
{
public:
    SettingTie(QAbstractButton& button, QStringView key)
        : QObject(&button)
        , m_button(button)
        , m_key(key)
    {
        showStored();
        button.installEventFilter(this);
        connect(&button, &QAbstractButton::toggled, this,
                [this](bool on) { MVSettings::setPreferencesWithBooleanValue(m_key, on); });
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
        // Nobody has switched it: nothing is stored, and no action runs.
        const QSignalBlocker quiet(m_button);
        m_button.setChecked(MVSettings::booleanPreferencesForKey(m_key));
    }

    QAbstractButton& m_button;
    QStringView m_key;
};

} // namespace

void tieToSetting(QAbstractButton& button, QStringView key)
{
    new SettingTie(button, key); // the button's
}
