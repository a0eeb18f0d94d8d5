#include "attestation/text/SystemFonts.h"

#include <QFile>
#include <QLibrary>

#include <memory>
#include <span>
#include <string_view>

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

    // Outline fonts with the character, the best first.
    [[nodiscard]] std::vector<FontPlace> fontsFor(char32_t character, const QByteArray& wanted) const
    {
        if (!m_configuration)
            return {};
        const PatternPtr pattern(m_parse(reinterpret_cast<const FcChar8*>(wanted.constData())), m_destroyPattern);
        if (!pattern)
            return {};
        m_substitute(m_configuration.get(), pattern.get(), FcMatchPattern);
        m_complete(pattern.get());
        FcResult result = FcResultNoMatch;
        const SetPtr sorted(m_sort(m_configuration.get(), pattern.get(), FcFalse, nullptr, &result), m_destroySet);
        if (!sorted)
            return {};
        std::vector<FontPlace> places;
        for (FcPattern* font : std::span(sorted->fonts, std::size_t(sorted->nfont))) {
            if (!isUsable(font, character))
                continue;
            FcChar8* path = nullptr;
            int index = 0;
            if (m_text(font, FC_FILE, 0, &path) != FcResultMatch ||
                m_number(font, FC_INDEX, 0, &index) != FcResultMatch)
                continue;
            // The upper half tells an instance of a variable font, whose default instance is taken.
            places.push_back({QFile::decodeName(reinterpret_cast<const char*>(path)), unsigned(index) & 0xffffU});
        }
        return places;
    }

private:
    using PatternPtr = std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)>;
    using SetPtr = std::unique_ptr<FcFontSet, decltype(&FcFontSetDestroy)>;
    using ConfigurationPtr = std::unique_ptr<FcConfig, decltype(&FcConfigDestroy)>;

    // Colours are not put into documents. A font of which fontconfig does not tell has none.
    [[nodiscard]] bool isUsable(FcPattern* font, char32_t character) const
    {
        FcChar8* format = nullptr;
        FcBool isColored = FcFalse;
        FcCharSet* characters = nullptr;
        if (m_text(font, FC_FONTFORMAT, 0, &format) != FcResultMatch ||
            m_characters(font, FC_CHARSET, 0, &characters) != FcResultMatch)
            return false;
        m_flag(font, FC_COLOR, 0, &isColored);
        const std::string_view outlines = reinterpret_cast<const char*>(format);
        return isColored == FcFalse && (outlines == "TrueType" || outlines == "CFF") &&
               m_hasCharacter(characters, character) == FcTrue;
    }

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
    decltype(&FcFontSort) m_sort = function<decltype(&FcFontSort)>("FcFontSort");
    decltype(&FcFontSetDestroy) m_destroySet = function<decltype(&FcFontSetDestroy)>("FcFontSetDestroy");
    decltype(&FcPatternGetString) m_text = function<decltype(&FcPatternGetString)>("FcPatternGetString");
    decltype(&FcPatternGetInteger) m_number = function<decltype(&FcPatternGetInteger)>("FcPatternGetInteger");
    decltype(&FcPatternGetBool) m_flag = function<decltype(&FcPatternGetBool)>("FcPatternGetBool");
    decltype(&FcPatternGetCharSet) m_characters = function<decltype(&FcPatternGetCharSet)>("FcPatternGetCharSet");
    decltype(&FcCharSetHasChar) m_hasCharacter = function<decltype(&FcCharSetHasChar)>("FcCharSetHasChar");
    decltype(&FcPatternDestroy) m_destroyPattern = function<decltype(&FcPatternDestroy)>("FcPatternDestroy");
    // Null without the library. A configuration of its own, because the shared one is never freed.
    ConfigurationPtr m_configuration{m_isWhole ? m_load() : nullptr, m_destroyConfiguration};
};

} // namespace

std::vector<FontPlace> systemFontsFor(char32_t character, bool bold)
{
    static const Fontconfig fontconfig;
    // The format comes before all else that is asked for.
    return fontconfig.fontsFor(character, "sans-serif:fontformat=TrueType:color=false:charset=" +
                                              QByteArray::number(uint(character), 16) + (bold ? ":bold" : ""));
}
