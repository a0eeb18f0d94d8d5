#include "attestation/text/PageFonts.h"

#include "card/PelmoraError.h"

#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<const FontFace> faceNamed(const Bundle& bundle, const QString& name)
{
    const std::optional<QString> path = bundle.pathForResource(name, u"ttf"_s);
    std::unique_ptr<const FontFace> face = path ? FontFace::load(*path) : nullptr;
    return face && face->isIntact() ? std::move(face) : nullptr;
}

PageFont pageFont(const std::shared_ptr<const FontStack>& faces, double size, bool bold)
{
    PageFont font{.faces = faces, .size = size, .bold = bold};
    const FontFace& face = faces->own();
    font.ascent = face.ascent() * font.scaleOf(face);
    font.lineHeight = face.lineHeight() * font.scaleOf(face);
    return font;
}

} // namespace

std::expected<PageFonts, Error> PageFonts::load(const Bundle& bundle)
{
    std::unique_ptr<const FontFace> regular = faceNamed(bundle, u"PelmoraSans-Regular"_s);
    std::unique_ptr<const FontFace> bold = faceNamed(bundle, u"PelmoraSans-Bold"_s);
    if (!regular || !bold) {
        return std::unexpected(
            Error(PelmoraError::domain, PelmoraError::internalError().code(),
                  u"Les polices de l'attestation sont introuvables ou abîmées. Réinstallez l'application."_s));
    }
    return PageFonts(std::move(regular), std::move(bold));
}

PageFonts::PageFonts(std::unique_ptr<const FontFace> regular, std::unique_ptr<const FontFace> bold)
    : m_regular(std::make_shared<const FontStack>(std::move(regular), false))
    , m_bold(std::make_shared<const FontStack>(std::move(bold), true))
{
}

PageFont PageFonts::systemFontOfSize(double size) const
{
    return pageFont(m_regular, size, false);
}

PageFont PageFonts::boldSystemFontOfSize(double size) const
{
    return pageFont(m_bold, size, true);
}
