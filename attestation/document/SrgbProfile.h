#pragma once

#include <string>

/// The colour profile sRGB, as a zlib stream. Its source is made when the program is built.
[[nodiscard]] std::string deflatedSrgbProfile();
