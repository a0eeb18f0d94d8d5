#include "attestation/document/PdfFonts.h"

#include <algorithm>

namespace {

std::string nameOf(std::size_t index)
{
    return "/F" + std::to_string(index);
}

} // namespace

PdfFonts::Named PdfFonts::fontFor(const FontFace& face)
{
    const auto known = std::ranges::find(m_entries, &face, &Entry::face);
    const auto index = std::size_t(known - m_entries.begin());
    if (known == m_entries.end())
        m_entries.push_back({&face, std::make_unique<PdfFont>(face)});
    return {nameOf(index), *m_entries[index].font};
}

std::optional<std::string> PdfFonts::embedIn(PdfFile& file) const
{
    std::string entries;
    for (std::size_t index = 0; index < m_entries.size(); ++index) {
        const std::optional<PdfReference> font = m_entries[index].font->embedIn(file);
        if (!font)
            return std::nullopt;
        entries += nameOf(index) + ' ' + font->text() + ' ';
    }
    return entries;
}
