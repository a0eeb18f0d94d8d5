#include "attestation/text/SystemFonts.h"

#include <QFile>
#include <QLibrary>

#include <memory>

#include <fontconfig/fontconfig.h>

using namespace Qt::StringLiterals;

namespace {

/// The functions of fontconfig that are needed, found by name, so that a program which needs no other font does not
/// load the library; and the system's configuration and fonts, as the library knows them.
class Fontconfig
{
public:
    // The library stays, for what it keeps for its own use.
    Fontconfig() { m_library.setLoadHints(QLibrary::PreventUnloadHint); }

    [[nodiscard]] std::optional<FontPlace> match(const QByteArray& wanted) const
    {
        if (!m_configuration)
            return std::nullopt;
        const PatternPtr pattern(m_parse(reinterpret_cast<const FcChar8*>(wanted.constData())), m_destroyPattern);
        if (!pattern)
            return std::nullopt;
        m_substitute(m_configuration.get(), pattern.get(), FcMatchPattern);
        m_complete(pattern.get());
        FcResult result = FcResultNoMatch;
        const PatternPtr found(m_match(m_configuration.get(), pattern.get(), &result), m_destroyPattern);
        FcChar8* path = nullptr;
        if (!found || m_text(found.get(), FC_FILE, 0, &path) != FcResultMatch)
            return std::nullopt;
        int index = 0;
        m_number(found.get(), FC_INDEX, 0, &index);
        // The upper half tells an instance of a variable font, whose default instance is taken.
        return FontPlace{QFile::decodeName(reinterpret_cast<const char*>(path)), unsigned(index) & 0xffffU};
    }

private:
    using PatternPtr = std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)>;
    using ConfigurationPtr = std::unique_ptr<FcConfig, decltype(&FcConfigDestroy)>;

    template <typename Function>
    Function function(const char* name)
    {
        const auto found = reinterpret_cast<Function>(m_library.resolve(name));
        m_isWhole = m_isWhole && found != nullptr;
        return found;
    }

    QLibrary m_library{u"fontconfig"_s, 1};
    bool m_isWhole = true;
    decltype(&FcInitLoadConfigAndFonts) m_load =
        function<decltype(&FcInitLoadConfigAndFonts)>("FcInitLoadConfigAndFonts");
    decltype(&FcConfigDestroy) m_destroyConfiguration = function<decltype(&FcConfigDestroy)>("FcConfigDestroy");
    decltype(&FcNameParse) m_parse = function<decltype(&FcNameParse)>("FcNameParse");
    decltype(&FcConfigSubstitute) m_substitute = function<decltype(&FcConfigSubstitute)>("FcConfigSubstitute");
    decltype(&FcDefaultSubstitute) m_complete = function<decltype(&FcDefaultSubstitute)>("FcDefaultSubstitute");
    decltype(&FcFontMatch) m_match = function<decltype(&FcFontMatch)>("FcFontMatch");
    decltype(&FcPatternGetString) m_text = function<decltype(&FcPatternGetString)>("FcPatternGetString");
    decltype(&FcPatternGetInteger) m_number = function<decltype(&FcPatternGetInteger)>("FcPatternGetInteger");
    decltype(&FcPatternDestroy) m_destroyPattern = function<decltype(&FcPatternDestroy)>("FcPatternDestroy");
    // Null without the library. A configuration of its own, because the shared one is never freed.
    ConfigurationPtr m_configuration{m_isWhole ? m_load() : nullptr, m_destroyConfiguration};
};

} // namespace

std::optional<FontPlace> systemFontFor(char32_t character, bool bold)
{
    static const Fontconfig fontconfig;
    return fontconfig.match("sans-serif:fontformat=TrueType:color=false:charset=" +
                            QByteArray::number(uint(character), 16) + (bold ? ":bold" : ""));
}
