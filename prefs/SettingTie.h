#pragma once

#include "prefs/settings/Settings.h"

class QAbstractButton;
class UserDefaults;

/// Connects a check box and a boolean setting: the box shows the stored value whenever it becomes visible, and stores
/// each change before other connected actions run. The store must outlive the button.
void tieToSetting(QAbstractButton& button, UserDefaults& store, const Setting<bool>& setting);
