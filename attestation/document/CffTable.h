#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A "CFF " table for a document's font, made of a table without subroutines: under each number (CID) from 0 on it has
/// the glyph that stands there in the list, by its index in the old table. A glyph may have several numbers. The new
/// table is CID-keyed, whatever the old one is, and numbers are the glyphs' indexes too. Nothing when the old table is
/// damaged.
[[nodiscard]] std::optional<std::string> cffTableWithGlyphs(std::string_view table,
                                                            const std::vector<unsigned>& glyphs);
