#pragma once

#include <optional>
#include <string_view>

/// Markup that is refused before parsing. No card has it, and it can make a parser slow: declarations can define
/// entities, each tag becomes objects, and attributes and namespaces of an element are compared pairwise.
enum class MarkupFault
{
    Declarations, ///< a document type with an internal subset, even an empty one
    TooManyTags,
    TooManyAttributes,
    TooManyNamespaces
};

/// Tags, comments and other markup in a document: some hundred times what a large card has.
inline constexpr int maximumTags = 250'000;

/// Attributes of one element, and namespace declarations of a document.
inline constexpr int maximumAttributes = 256;
inline constexpr int maximumNamespaces = 64;

/// Checks an XML text in UTF-8 in linear time. Valid up to the text's first error, where the parser must stop.
[[nodiscard]] std::optional<MarkupFault> findMarkupFault(std::string_view text);
