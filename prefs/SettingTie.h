#pragma once

#include "prefs/settings/Settings.h"

class QAbstractButton;
class QSpinBox;
class QWidget;
class UserDefaults;

/// Disables a control when the site's administrator has locked its setting, and tells users the reason.
void disableIfLocked(QWidget& control, const UserDefaults& store, QStringView key);

/// Connects a check box and a boolean setting: the box shows the stored value whenever it becomes visible, and stores
/// each change before other connected actions run. The store must outlive the button.
void tieToSetting(QAbstractButton& button, UserDefaults& store, const Setting<bool>& setting);

/// The same for a number field and an integer setting. The field shows a stored value outside of its range as its
/// nearest one, and stores that only when the user changes it.
void tieToSetting(QSpinBox& field, UserDefaults& store, const Setting<qint64>& setting);
