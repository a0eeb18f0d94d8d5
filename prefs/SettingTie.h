#pragma once

#include "prefs/settings/Settings.h"

class QAbstractButton;
class UserDefaults;

/// Ties a check box to a boolean setting: it shows what is stored whenever it comes into view, and every switch of it
/// is stored at once, before anything that is connected to it later. The store must outlive the button.
void tieToSetting(QAbstractButton& button, UserDefaults& store, const Setting<bool>& setting);
