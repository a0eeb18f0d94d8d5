#pragma once

#include <QString>

#include <optional>

/// Where a font file is, and which of its faces is meant.
struct FontPlace
{
    QString path;
    unsigned index = 0;
};

/// The font of the system that fontconfig thinks best for a character; absent when fontconfig is not there or knows no
/// outline font. The font may have no such character all the same. Fontconfig is loaded at the first call: most pages
/// need no other font than their own. Main thread only.
[[nodiscard]] std::optional<FontPlace> systemFontFor(char32_t character, bool bold);
