#pragma once

#include <QStringView>

/// The only reader model for health cards.
inline constexpr QStringView acceptedReader{u"Feitian SCR301"};
