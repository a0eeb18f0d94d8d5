#pragma once

#include <QStringView>

class QAbstractButton;

/// Ties a check box to a boolean setting: it shows what is stored whenever it comes into view, and every switch of it
/// is stored at once, before anything that is connected to it later. The key is one of SettingsKey.
void tieToSetting(QAbstractButton& button, QStringView key);
