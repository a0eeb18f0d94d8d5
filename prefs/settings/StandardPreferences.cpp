#include "prefs/settings/StandardPreferences.h"

#include "prefs/settings/MVSettings.h"

#include <QDir>

using namespace Qt::StringLiterals;

QVariantMap standardPreferences()
{
    return {
        // A text on purpose: read as an integer it is 0, the automatic mode.
        {SettingsKey::lvitMode.toString(), u"Auto"_s},
        {SettingsKey::showRightLabelPrintOption.toString(), false},
        {SettingsKey::attestationsFolder.toString(), QDir::homePath() + "/Documents/Attestations Pelmora"_L1},
        {SettingsKey::statusItemMenu.toString(), true},
    };
}

void setStandardPreferences()
{
    MVSettings::registerDefaults(standardPreferences());
    // The debug mode never outlives the run in which it was switched on.
    MVSettings::setPreferencesWithBooleanValue(SettingsKey::debugMode, false);
}
