#pragma once

#include "platform/Error.h"

#include <QByteArray>
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
    /// Elements that a path leads to, in document order. A path is element names joined by "/"; one that begins with
    /// "/" starts at the document node, any other at this node.
    [[nodiscard]] std::vector<XmlNode> nodes(std::string_view path) const;

    /// The first of nodes(path).
    [[nodiscard]] std::optional<XmlNode> firstNode(std::string_view path) const;

    /// Whether the node has a child of any kind (an element, a text, a comment).
    [[nodiscard]] bool hasChildren() const;

    /// The text of the node and of all that it contains, joined.
    [[nodiscard]] QString stringValue() const;

private:
    friend class XmlDocument;
    explicit XmlNode(const _xmlNode* node)
        : m_node(node)
    {
    }

    const _xmlNode* m_node;
};

/// A well-formed XML document, parsed strictly: a document type without declarations is ignored, one with declarations
/// is refused; no entity of its own, nothing fetched, nesting and text sizes bounded. Usable on any one thread at a
/// time.
class XmlDocument
{
public:
    /// The domain of the errors that parsing gives.
    static constexpr QLatin1StringView errorDomain{"XML"};

    /// Bytes, in UTF-8, beyond which a text is refused before it is parsed.
    static constexpr std::size_t maximumSize = std::size_t{16} * 1024 * 1024;

    /// Parses a text that is already decoded: the encoding that it declares is ignored.
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
