#include "prefs/settings/StandardPreferences.h"

#include "platform/TildePath.h"
#include "platform/UserDefaults.h"
#include "prefs/settings/MVSettings.h"

namespace {

template <typename Value>
void addDefault(QVariantMap& defaults, const Setting<Value>& setting)
{
    if (const auto* text = std::get_if<QStringView>(&setting.defaultValue))
        defaults.insert(setting.key.toString(), expandingTildeInPath(text->toString()));
    else if (const auto* flag = std::get_if<bool>(&setting.defaultValue))
        defaults.insert(setting.key.toString(), *flag);
}

} // namespace

void registerStandardPreferences(UserDefaults& store)
{
    QVariantMap defaults;
    std::apply([&](const auto&... setting) { (addDefault(defaults, setting), ...); }, Settings::all);
    store.registerDefaults(defaults);
}

void setStandardPreferences(UserDefaults& store)
{
    registerStandardPreferences(store);
    // The debug mode lasts for one run only.
    MVSettings::setPreferencesWithBooleanValue(store, Settings::debugMode, false);
}
