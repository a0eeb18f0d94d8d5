#pragma once

#include "service/embedded/CardMap.h"

#include <QByteArrayView>

/// The text of a value's bytes in a form; empty for an unused value. Absent when the bytes do not have that form.
[[nodiscard]] std::optional<QString> cardText(CardForm form, QByteArrayView bytes);

/// Whether the date is possible. Zeros are unknown parts.
[[nodiscard]] bool isPossibleDate(int year, int month, int day);
