#pragma once

#include <QString>

#include <vector>

/// Where a font file is, and which of its faces is meant.
struct FontPlace
{
    QString path;
    unsigned index = 0;
};

/// The fonts of the system that have a character, with TrueType outlines or PostScript ones: those of TrueType first,
/// each kind in the order in which fontconfig prefers them. None when fontconfig is not there. Fontconfig is loaded at
/// the first call: most pages need no other font than their own. Main thread only.
[[nodiscard]] std::vector<FontPlace> systemFontsFor(char32_t character, bool bold);
