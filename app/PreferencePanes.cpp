#include "app/PreferencePanes.h"

#include "prefs/LVitAccessPrefs.h"
#include "prefs/MVAttestationPrefs.h"
#include "prefs/MVConfigPrefs.h"
#include "prefs/MVPreferences.h"
#include "prefs/MVUpdatePrefs.h"

void registerPreferencePanes(UserDefaults& settings, const Bundle& bundle, StatusItemControl& statusItem,
                             const std::shared_ptr<LVitAccess>& client, SUUpdater& updater)
{
    MVPreferences::resigterPreferencesPane(std::make_shared<MVConfigPrefs>(settings, statusItem, bundle));
    MVPreferences::resigterPreferencesPane(std::make_shared<MVAttestationPrefs>(settings, bundle));
    MVPreferences::resigterPreferencesPane(std::make_shared<LVitAccessPrefs>(settings, client, bundle));
    const auto updatePrefs = std::make_shared<MVUpdatePrefs>(bundle);
    updatePrefs->setUpdater(&updater);
    MVPreferences::resigterPreferencesPane(updatePrefs);
}
