#pragma once

#include "attestation/text/FontFace.h"

#include <map>
#include <memory>
#include <vector>

/// A face of the page's own family, and the system's faces that stand in for the characters that it has not. Main
/// thread only.
class FontStack final
{
public:
    FontStack(std::unique_ptr<const FontFace> own, bool bold);

    [[nodiscard]] const FontFace& own() const { return *m_own; }

    /// The face that shows the character, the page's own where it can: it lives as long as the stack. Null when no font
    /// has it.
    [[nodiscard]] const FontFace* faceFor(char32_t character) const;

private:
    [[nodiscard]] const FontFace* systemFaceFor(char32_t character) const;

    std::unique_ptr<const FontFace> m_own;
    bool m_bold;
    // Made when they are asked for: what a text needs is the same each time.
    mutable std::vector<std::unique_ptr<const FontFace>> m_others;
    mutable std::map<char32_t, const FontFace*> m_known;
};
