#include "prefs/SettingTie.h"

#include "platform/UserDefaults.h"
#include "prefs/settings/MVSettings.h"

#include <QAbstractButton>
#include <QEvent>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

void show(QAbstractButton& button, bool stored)
{
    button.setChecked(stored);
}

void show(QSpinBox& field, qint64 stored)
{
    field.setValue(static_cast<int>(std::clamp<qint64>(stored, field.minimum(), field.maximum())));
}

bool storedValue(const UserDefaults& store, const Setting<bool>& setting)
{
    return MVSettings::booleanPreferencesForKey(store, setting);
}

qint64 storedValue(const UserDefaults& store, const Setting<qint64>& setting)
{
    return MVSettings::integerPreferencesForKey(store, setting);
}

/// Shows the stored value whenever the control becomes visible.
template <typename Control, typename Value>
class SettingTie final : public QObject
{
public:
    SettingTie(Control& control, UserDefaults& store, const Setting<Value>& setting)
        : QObject(&control)
        , m_control(control)
        , m_store(store)
        , m_setting(setting)
    {
        disableIfLocked(control, store, setting.key);
        showStored();
        control.installEventFilter(this);
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
        const QSignalBlocker quiet(m_control);
        show(m_control, storedValue(m_store, m_setting));
    }

    Control& m_control;
    UserDefaults& m_store;
    Setting<Value> m_setting;
};

} // namespace

void disableIfLocked(QWidget& control, const UserDefaults& store, QStringView key)
{
    if (!store.isLocked(key.toString()))
        return;
    const QString reason = u"Ce réglage est fixé par l’administrateur informatique."_s;
    control.setEnabled(false);
    control.setToolTip(reason);
    control.setAccessibleDescription(reason);
}

void tieToSetting(QAbstractButton& button, UserDefaults& store, const Setting<bool>& setting)
{
    // Owned by the button.
    auto* tie = new SettingTie<QAbstractButton, bool>(button, store, setting);
    QObject::connect(&button, &QAbstractButton::toggled, tie,
                     [&store, setting](bool on) { MVSettings::setPreferencesWithBooleanValue(store, setting, on); });
}

void tieToSetting(QSpinBox& field, UserDefaults& store, const Setting<qint64>& setting)
{
    auto* tie = new SettingTie<QSpinBox, qint64>(field, store, setting);
    QObject::connect(&field, &QSpinBox::valueChanged, tie, [&store, setting](int value) {
        MVSettings::setPreferencesWithIntegerValue(store, setting, value);
    });
}
