#include "platform/XmlMarkup.h"

#include <algorithm>
#include <array>

namespace {

/// Markup that is skipped as a whole.
struct Section
{
    std::string_view begin;
    std::string_view end;
};

constexpr std::array sections{Section{"<!--", "-->"}, Section{"<![CDATA[", "]]>"}, Section{"<?", "?>"}};

constexpr std::string_view documentType = "<!DOCTYPE";
constexpr std::string_view namespaceKeyword = "xmlns";

/// The text after the first occurrence of the end; empty when there is none.
std::string_view after(std::string_view text, std::string_view end)
{
    const std::size_t found = text.find(end);
    return found == std::string_view::npos ? std::string_view() : text.substr(found + end.size());
}

struct DocumentType
{
    bool hasSubset = false;
    std::string_view rest;
};

DocumentType readDocumentType(std::string_view text)
{
    std::size_t position = documentType.size();
    while ((position = text.find_first_of("[>'\"", position)) != std::string_view::npos) {
        const char character = text[position];
        if (character == '[')
            return {.hasSubset = true, .rest = {}};
        if (character == '>')
            return {.hasSubset = false, .rest = text.substr(position + 1)};
        // Skips an identifier in quotes, which may contain the other characters.
        position = text.find(character, position + 1);
        if (position == std::string_view::npos)
            break;
        ++position;
    }
    return {};
}

/// Counts of a tag, and the text after it.
struct Tag
{
    int attributes = 0;
    int namespaces = 0;
    std::string_view rest;
};

Tag readTag(std::string_view text)
{
    Tag tag;
    std::size_t position = 1;
    while ((position = text.find_first_of("<>='\"", position)) != std::string_view::npos) {
        const char character = text[position];
        // Not well-formed: the parser stops here.
        if (character == '<')
            break;
        if (character == '>') {
            tag.rest = text.substr(position + 1);
            break;
        }
        if (character == '=') {
            ++tag.attributes;
            ++position;
            continue;
        }
        position = text.find_first_of(character == '\'' ? "'<" : "\"<", position + 1);
        if (position == std::string_view::npos || text[position] == '<')
            break;
        ++position;
    }
    const std::string_view whole = text.substr(0, position);
    if (tag.attributes > 0) {
        for (std::size_t found = 0; (found = whole.find(namespaceKeyword, found)) != std::string_view::npos; ++found)
            ++tag.namespaces;
    }
    return tag;
}

} // namespace

std::optional<MarkupFault> findMarkupFault(std::string_view text)
{
    int namespaces = 0;
    for (int tags = 0;; ++tags) {
        const std::size_t markup = text.find('<');
        if (markup == std::string_view::npos)
            return std::nullopt;
        if (tags == maximumTags)
            return MarkupFault::TooManyTags;
        text.remove_prefix(markup);
        if (text.starts_with(documentType)) {
            const DocumentType type = readDocumentType(text);
            if (type.hasSubset)
                return MarkupFault::Declarations;
            text = type.rest;
            continue;
        }

        const auto* section = std::ranges::find_if(
            sections, [text](const Section& candidate) { return text.starts_with(candidate.begin); });
        if (section != sections.end()) {
            text = after(text.substr(section->begin.size()), section->end);
            continue;
        }
        const Tag tag = readTag(text);
        namespaces += tag.namespaces;
        if (tag.attributes > maximumAttributes)
            return MarkupFault::TooManyAttributes;
        if (namespaces > maximumNamespaces)
            return MarkupFault::TooManyNamespaces;
        text = tag.rest;
    }
}
