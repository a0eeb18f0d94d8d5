#pragma once

#include <QVariantMap>

/// What every setting is before the user has chosen.
[[nodiscard]] QVariantMap standardPreferences();

/// Start-up of the settings: registers the standard preferences and switches the debug mode off. Main thread, once.
void setStandardPreferences();
