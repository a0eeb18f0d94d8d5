#pragma once

#include "service/embedded/CardMap.h"

#include <QByteArrayView>

/// The text that a value's bytes are in a form, empty when they are only what an unused place is filled up with.
/// Nothing when they cannot be of that form.
[[nodiscard]] std::optional<QString> cardText(CardForm form, QByteArrayView bytes);

/// Whether such a day can be, zeros standing for what is not known.
[[nodiscard]] bool isPossibleDate(int year, int month, int day);
