#pragma once

class UserDefaults;

/// Registers the default values; stores nothing. Main thread.
void registerStandardPreferences(UserDefaults& store);

/// Registers the default values and switches the debug mode off. Called once, at the start, on the main thread.
void setStandardPreferences(UserDefaults& store);
