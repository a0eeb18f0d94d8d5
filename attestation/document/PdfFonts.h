#pragma once

#include "attestation/document/PdfFont.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The fonts of a document, in the order in which they come up: "/F0", "/F1"...
class PdfFonts
{
public:
    /// A font for the face, made at its first use.
    struct Named
    {
        std::string name;
        PdfFont& font;
    };
    [[nodiscard]] Named fontFor(const FontFace& face);

    /// The entries of the page's font dictionary. Nothing when a face cannot be cut.
    [[nodiscard]] std::optional<std::string> embedIn(PdfFile& file) const;

private:
    struct Entry
    {
        const FontFace* face; // lives as long as the page's fonts
        std::unique_ptr<PdfFont> font;
    };

    std::vector<Entry> m_entries;
};
