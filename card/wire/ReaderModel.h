#pragma once

#include <QStringView>

/// The one reader model that is accepted for health cards.
inline constexpr QStringView acceptedReader{u"Feitian SCR301"};
