#pragma once

#include "attestation/text/FontStack.h"
#include "platform/Bundle.h"
#include "platform/Error.h"

#include <expected>
#include <memory>

/// A font of the page. Measures in points.
struct PageFont
{
    std::shared_ptr<const FontStack> faces;
    double size = 0;
    bool bold = false;
    double ascent = 0;
    double lineHeight = 0;

    /// Points a font unit of the face.
    [[nodiscard]] double scaleOf(const FontFace& face) const { return size / face.unitsPerEm(); }
};

/// The page's one family, shipped with the program, in its regular and bold faces: never hinted or kerned, so that a
/// page is the same on every machine, with a display or without, and its text can be read back from a PDF. Main thread
/// only.
class PageFonts
{
public:
    /// Fails when a file is missing or damaged.
    [[nodiscard]] static std::expected<PageFonts, Error> load(const Bundle& bundle);

    [[nodiscard]] PageFont systemFontOfSize(double size) const;
    [[nodiscard]] PageFont boldSystemFontOfSize(double size) const;

private:
    PageFonts(std::unique_ptr<const FontFace> regular, std::unique_ptr<const FontFace> bold);

    std::shared_ptr<const FontStack> m_regular;
    std::shared_ptr<const FontStack> m_bold;
};
