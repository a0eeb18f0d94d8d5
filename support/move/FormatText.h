#pragma once

#include <QString>
#include <QStringList>

/// The format with its placeholders, "%@" and "%d", replaced by the values in their order; a value's own text is never
/// taken for a placeholder. Values that are left over are dropped, placeholders that are left over stay.
[[nodiscard]] QString formattedText(QStringView format, const QStringList& values);
