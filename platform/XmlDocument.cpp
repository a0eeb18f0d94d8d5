#include "platform/XmlDocument.h"

#include "platform/XmlMarkup.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <climits>
#include <mutex>

using namespace Qt::StringLiterals;

namespace {

// The code of errors that do not come from libxml2.
constexpr int refusedCode = -1;

Error refused(const QString& reason)
{
    return {XmlDocument::errorDomain, refusedCode, reason};
}

// libxml2's messages quote the document, which may be about a patient: only the position is reported.
Error notWellFormed(const xmlError* error)
{
    if (error == nullptr)
        return refused(u"Le document n’est pas du XML valide."_s);
    return {XmlDocument::errorDomain, error->code,
            u"Le document n’est pas du XML valide (ligne %1, colonne %2)."_s.arg(error->line).arg(error->int2)};
}

std::string_view asView(const xmlChar* text)
{
    return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

bool isElementNamed(const xmlNode* node, std::string_view name)
{
    return node->type == XML_ELEMENT_NODE && node->ns == nullptr && asView(node->name) == name;
}

std::vector<const xmlNode*> childElements(const std::vector<const xmlNode*>& parents, std::string_view name)
{
    std::vector<const xmlNode*> found;
    for (const xmlNode* parent : parents) {
        for (const xmlNode* child = parent->children; child != nullptr; child = child->next) {
            if (isElementNamed(child, name))
                found.push_back(child);
        }
    }
    return found;
}

// Depth first, which is document order.
const xmlNode* firstDescendant(const xmlNode* node, std::string_view path)
{
    if (path.empty())
        return node;
    const std::size_t end = path.find('/');
    const std::string_view rest = end == std::string_view::npos ? std::string_view() : path.substr(end + 1);
    for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
        if (!isElementNamed(child, path.substr(0, end)))
            continue;
        if (const xmlNode* found = firstDescendant(child, rest))
            return found;
    }
    return nullptr;
}

// libxml2's document structure begins with the members of a node.
const xmlNode* documentOf(const xmlNode* node)
{
    return reinterpret_cast<const xmlNode*>(node->doc);
}

struct ParserDeleter
{
    void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
};

// Stops at the first error. An undeclared entity is an error here. libxml2 only warns of it, and drops it, when the
// document type names an external file.
void stopAtFault(void* context, const xmlError* error)
{
    const bool isUnknownEntity = error->code == XML_WAR_UNDECLARED_ENTITY;
    if (error->level != XML_ERR_FATAL && !isUnknownEntity)
        return;
    auto* parser = static_cast<xmlParserCtxt*>(context);
    parser->wellFormed = 0;
    xmlStopParser(parser);
}

QString reasonOf(MarkupFault fault)
{
    switch (fault) {
    case MarkupFault::Declarations:
        return u"Le document XML contient des déclarations (DOCTYPE), qui sont refusées."_s;
    case MarkupFault::TooManyTags:
        return u"Le document XML a trop d’éléments."_s;
    case MarkupFault::TooManyAttributes:
        return u"Un élément du document XML a trop d’attributs."_s;
    case MarkupFault::TooManyNamespaces:
        return u"Le document XML déclare trop d’espaces de noms."_s;
    }
    return {};
}

struct TextDeleter
{
    void operator()(xmlChar* text) const { xmlFree(text); }
};

} // namespace

std::vector<XmlNode> XmlNode::nodes(std::string_view path) const
{
    std::vector<const xmlNode*> current{m_node};
    if (path.starts_with('/')) {
        current = {documentOf(m_node)};
        path.remove_prefix(1);
    }
    while (!path.empty() && !current.empty()) {
        const std::size_t end = path.find('/');
        current = childElements(current, path.substr(0, end));
        path = end == std::string_view::npos ? std::string_view() : path.substr(end + 1);
    }

    std::vector<XmlNode> found;
    found.reserve(current.size());
    for (const xmlNode* node : current)
        found.push_back(XmlNode(node));
    return found;
}

std::optional<XmlNode> XmlNode::firstNode(std::string_view path) const
{
    const bool isAbsolute = path.starts_with('/');
    const xmlNode* start = isAbsolute ? documentOf(m_node) : m_node;
    const xmlNode* found = firstDescendant(start, isAbsolute ? path.substr(1) : path);
    return found == nullptr ? std::nullopt : std::optional(XmlNode(found));
}

bool XmlNode::hasChildren() const
{
    return m_node->children != nullptr;
}

QString XmlNode::stringValue() const
{
    // Most values are one text node, which is read without a copy.
    const xmlNode* child = m_node->children;
    if (child == nullptr)
        return u""_s;
    if (child->next == nullptr && (child->type == XML_TEXT_NODE || child->type == XML_CDATA_SECTION_NODE)) {
        const std::string_view text = asView(child->content);
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    }
    const std::unique_ptr<xmlChar, TextDeleter> content(xmlNodeGetContent(m_node));
    const std::string_view text = asView(content.get());
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

void XmlDocument::Deleter::operator()(_xmlDoc* document) const
{
    xmlFreeDoc(document);
}

std::expected<XmlDocument, Error> XmlDocument::fromText(const QString& text)
{
    static_assert(maximumSize < INT_MAX);
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<std::size_t>(bytes.size());
    if (size > maximumSize)
        return std::unexpected(refused(u"Le document XML est trop volumineux."_s));
    if (size == 0)
        return std::unexpected(refused(u"Le document XML est vide."_s));
    // libxml2 takes a null character after the root element for the end.
    if (bytes.contains('\0'))
        return std::unexpected(notWellFormed(nullptr));
    if (const std::optional<MarkupFault> fault = findMarkupFault({bytes.constData(), size}))
        return std::unexpected(refused(reasonOf(*fault)));
    return parse(bytes);
}

std::expected<XmlDocument, Error> XmlDocument::parse(const QByteArray& utf8)
{
    // libxml2 requires this before two threads parse at once.
    static std::once_flag initialised;
    std::call_once(initialised, xmlInitParser);
    const std::unique_ptr<xmlParserCtxt, ParserDeleter> parser(xmlNewParserCtxt());
    if (!parser)
        return std::unexpected(notWellFormed(nullptr));
    // A generic lambda: versions of libxml2 differ in whether the error is const.
    parser->sax->serror = [](void* context, auto* error) { stopAtFault(context, error); };
    // XML_PARSE_NOCDATA: libxml2 joins neighbouring texts in linear time, but CDATA sections in quadratic time.
    constexpr int options =
        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NOCDATA | XML_PARSE_IGNORE_ENC;
    // No encoding is named: UTF-8 is the default, and naming it costs a conversion.
    std::unique_ptr<_xmlDoc, Deleter> document(
        xmlCtxtReadMemory(parser.get(), utf8.constData(), static_cast<int>(utf8.size()), nullptr, nullptr, options));
    if (!document)
        return std::unexpected(notWellFormed(xmlCtxtGetLastError(parser.get())));
    return XmlDocument(document.release());
}

XmlNode XmlDocument::documentNode() const
{
    return XmlNode(reinterpret_cast<const xmlNode*>(m_document.get()));
}

XmlNode XmlDocument::rootElement() const
{
    return XmlNode(xmlDocGetRootElement(m_document.get()));
}
