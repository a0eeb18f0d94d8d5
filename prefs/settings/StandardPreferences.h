#pragma once

class UserDefaults;

/// Registers what every setting is before the user has chosen. Nothing is stored. Main thread.
void registerStandardPreferences(UserDefaults& store);

/// Start-up of the settings: registers the standard preferences and switches the debug mode off. Main thread, once.
void setStandardPreferences(UserDefaults& store);
