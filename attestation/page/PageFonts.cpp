#include "attestation/page/PageFonts.h"

#include "card/PelmoraError.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QStringList>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

// The family that the file holds; empty when it cannot be used.
QString addFontFile(const Bundle& bundle, const QString& name)
{
    const std::optional<QString> path = bundle.pathForResource(name, u"ttf"_s);
    if (!path)
        return {};
    const QStringList families = QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(*path));
    return families.value(0);
}

QFont pageFont(const QString& family, double size, bool bold)
{
    QFont font(family);
    font.setPixelSize(qRound(size * pageUnitsPerPoint));
    font.setBold(bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setKerning(false);
    // Qt takes a combination of strategies as one value of their enumeration.
    // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange)
    font.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::PreferNoShaping));
    return font;
}

} // namespace

std::expected<PageFonts, Error> PageFonts::load(const Bundle& bundle)
{
    const QString family = addFontFile(bundle, u"PelmoraSans-Regular"_s);
    if (family.isEmpty() || addFontFile(bundle, u"PelmoraSans-Bold"_s) != family) {
        return std::unexpected(Error(PelmoraError::domain, PelmoraError::internalError().code(),
                                     u"Les polices de l'attestation sont introuvables. Réinstallez l'application."_s));
    }
    return PageFonts(family);
}

PageFonts::PageFonts(QString family)
    : m_family(std::move(family))
{
}

const PageFont& PageFonts::font(double size, bool bold) const
{
    const auto [entry, isNew] = m_fonts.try_emplace({size, bold});
    PageFont& font = entry->second;
    if (isNew) {
        font.font = pageFont(m_family, size, bold);
        font.size = size;
        font.bold = bold;
        const QFontMetricsF metrics(font.font);
        font.ascent = metrics.ascent() / pageUnitsPerPoint;
        font.lineHeight = (metrics.ascent() + metrics.descent() + metrics.leading()) / pageUnitsPerPoint;
    }
    return font;
}
