#pragma once

#include <QStringList>

/// Replaces the placeholders "%@" and "%d" by the values in their order. Placeholders within a value are not replaced.
/// Values without a placeholder are dropped, placeholders without a value stay.
[[nodiscard]] QString formattedText(QStringView format, const QStringList& values);
