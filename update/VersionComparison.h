#pragma once

#include <QStringView>

#include <compare>

/// Whether a text is a version that can be compared: up to 64 ASCII letters, digits and ". - + ~ _", the first of them
/// a letter or a digit.
[[nodiscard]] bool isVersion(QStringView text);

/// Which of two versions is the newer one. Numbers count as numbers, of any length ("1.10" is newer than "1.9"),
/// missing ones as 0 ("1.0" is "1"), and letters announce what is not finished yet ("1.0b2" is older than "1.0").
[[nodiscard]] std::weak_ordering compareVersions(QStringView left, QStringView right);
