#include "prefs/MVPreferences.h"

#include "prefs/MVPreference.h"
#include "prefs/MVPreferencesController.h"

#include <utility>

MVPreferencesController& MVPreferences::preferences()
{
    // Never released: what it shows must not outlive the application object, nor end before it.
    static MVPreferencesController& instance = *new MVPreferencesController;
    return instance;
}

void MVPreferences::resigterPreferencesPane(std::shared_ptr<MVPreference> pane)
{
    preferences().resigterPreferencesPane(std::move(pane));
}

void MVPreferences::unregisterPreferencesPane(const MVPreference* pane)
{
    preferences().unregisterPreferencesPane(pane);
}

void MVPreferences::show()
{
    preferences().show();
}

void MVPreferences::hide()
{
    preferences().hide();
}

void MVPreferences::showPaneWithIdentifier(QStringView identifier)
{
    preferences().showPaneWithIdentifier(identifier);
}
