#include "prefs/MVPreferences.h"

#include "prefs/MVPreference.h"
#include "prefs/MVPreferencesController.h"

#include <utility>

MVPreferencesController& MVPreferences::preferences()
{
    // Never destroyed: its widgets must not be destroyed after the application object.
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
