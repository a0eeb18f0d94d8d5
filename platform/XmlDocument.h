#pragma once

#include "platform/Error.h"

#include <QString>

#include <cstddef>
#include <expected>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

// The names are libxml2's own.
struct _xmlDoc;  // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
struct _xmlNode; // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

/// A node of an XmlDocument, which must outlive it.
class XmlNode
{
public:
    /// The elements at a path, in document order. A path is element names joined by "/"; it starts at this node or,
    /// with a leading "/", at the document node.
    [[nodiscard]] std::vector<XmlNode> nodes(std::string_view path) const;

    /// The first of nodes(path).
    [[nodiscard]] std::optional<XmlNode> firstNode(std::string_view path) const;

    /// Whether the node has an element, a text or a comment in it.
    [[nodiscard]] bool hasChildren() const;

    /// All texts in the node, joined.
    [[nodiscard]] QString stringValue() const;

private:
    friend class XmlDocument;
    explicit XmlNode(const _xmlNode* node)
        : m_node(node)
    {
    }

    const _xmlNode* m_node;
};

/// A well-formed XML document. A document type is ignored, and refused when it contains declarations; entities are
/// refused and no other file is read. Size and nesting are limited. Used by one thread at a time.
class XmlDocument
{
public:
    static constexpr QLatin1StringView errorDomain{"XML"};

    /// Bytes, in UTF-8.
    static constexpr std::size_t maximumSize = std::size_t{16} * 1024 * 1024;

    /// Parses decoded text: an encoding that it declares is ignored.
    [[nodiscard]] static std::expected<XmlDocument, Error> fromText(const QString& text);

    [[nodiscard]] XmlNode documentNode() const;
    [[nodiscard]] XmlNode rootElement() const;

private:
    struct Deleter
    {
        void operator()(_xmlDoc* document) const;
    };

    explicit XmlDocument(_xmlDoc* document)
        : m_document(document)
    {
    }
    static std::expected<XmlDocument, Error> parse(const QByteArray& utf8);

    std::unique_ptr<_xmlDoc, Deleter> m_document;
};
