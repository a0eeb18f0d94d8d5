#include "attestation/text/FontStack.h"

#include "attestation/text/SystemFonts.h"

#include <algorithm>
#include <utility>

FontStack::FontStack(std::unique_ptr<const FontFace> own, bool bold)
    : m_own(std::move(own))
    , m_bold(bold)
{
}

const FontFace* FontStack::faceFor(char32_t character) const
{
    if (m_own->glyphOf(character))
        return m_own.get();
    const auto [entry, isNew] = m_known.try_emplace(character, nullptr);
    if (isNew)
        entry->second = systemFaceFor(character);
    return entry->second;
}

const FontFace* FontStack::systemFaceFor(char32_t character) const
{
    const auto hasIt = [character](const auto& face) { return face->glyphOf(character).has_value(); };
    // One font for a whole name, where it can be.
    if (const auto known = std::ranges::find_if(m_others, hasIt); known != m_others.cend())
        return known->get();
    for (const FontPlace& place : systemFontsFor(character, m_bold)) {
        std::unique_ptr<const FontFace> face = FontFace::load(place.path, place.index);
        if (face && hasIt(face))
            return m_others.emplace_back(std::move(face)).get();
    }
    return nullptr;
}
