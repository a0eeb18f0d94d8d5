#pragma once

#include <QStringView>

#include <compare>

/// Whether a text is a version: up to 64 ASCII letters, digits and ". - + ~ _", starting with a letter or a digit.
[[nodiscard]] bool isVersion(QStringView text);

/// Compares versions. Numbers are compared as numbers of any length ("1.10" is newer than "1.9"), missing ones count as
/// 0 ("1.0" equals "1"), and letters mark preliminary versions ("1.0b2" is older than "1.0").
[[nodiscard]] std::weak_ordering compareVersions(QStringView left, QStringView right);
