#pragma once

#include <optional>
#include <string_view>

/// Markup that is refused before an XML parser sees it, because no document of ours has it and it can cost a parser
/// more than its size is worth: declarations in a document type can define entities, each tag becomes objects, and
/// attributes and namespaces of one element are compared pairwise.
enum class MarkupFault
{
    Declarations, ///< a document type with an internal subset, even an empty one; one without is allowed
    TooManyTags,
    TooManyAttributes,
    TooManyNamespaces
};

/// Tags, comments and the like that a document may have, some hundred times what a large card has.
inline constexpr int maximumTags = 250'000;

/// Attributes that one element may have, and namespace declarations that a document may have.
inline constexpr int maximumAttributes = 256;
inline constexpr int maximumNamespaces = 64;

/// Looks over an XML text in UTF-8, in linear time. What it says holds as far as the text is well-formed: a parser must
/// stop where it is not.
[[nodiscard]] std::optional<MarkupFault> findMarkupFault(std::string_view text);
