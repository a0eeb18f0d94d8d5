#pragma once

#include "attestation/document/PdfFont.h"

#include <memory>
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

    /// The page's font dictionary.
    [[nodiscard]] QPDFObjectHandle embedIn(QPDF& document) const;

private:
    struct Entry
    {
        const FontFace* face; // lives as long as the page's fonts
        std::unique_ptr<PdfFont> font;
    };

    std::vector<Entry> m_entries;
};
