#include "attestation/page/PageOptions.h"

#include "prefs/settings/MVSettings.h"

PageOptions pageOptions(const UserDefaults& settings)
{
    return {.showRightLabel = MVSettings::booleanPreferencesForKey(settings, Settings::showRightLabelPrintOption)};
}
