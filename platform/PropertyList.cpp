#include "platform/PropertyList.h"

#include <QDateTime>
#include <QFile>

#include <cmath>
#include <cstdlib>
#include <memory>

#include <plist/plist.h>

namespace {

struct NodeDeleter
{
    void operator()(plist_t node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, NodeDeleter>;

struct MemoryDeleter
{
    void operator()(void* memory) const { std::free(memory); } // NOLINT(cppcoreguidelines-no-malloc)
};
using IteratorMemory = std::unique_ptr<void, MemoryDeleter>;
using TextMemory = std::unique_ptr<char, MemoryDeleter>;

constexpr qsizetype maximumSize = qsizetype{1024} * 1024; // bytes

// libplist reads and frees nested lists by recursion: deeper lists are refused before that.
constexpr int maximumDepth = 64;

QDateTime referenceDate()
{
    return {QDate(2001, 1, 1), QTime(0, 0), Qt::UTC};
}

bool isNestedTooDeep(const QByteArray& xml)
{
    int depth = 0;
    for (qsizetype at = xml.indexOf('<'); at >= 0; at = xml.indexOf('<', at + 1)) {
        const QByteArrayView tag = QByteArrayView(xml).sliced(at + 1);
        if (tag.startsWith("/array") || tag.startsWith("/dict"))
            --depth;
        else if ((tag.startsWith("array") || tag.startsWith("dict")) && ++depth > maximumDepth)
            return true;
    }
    return false;
}

QVariant valueOf(plist_t node);

QVariant arrayOf(plist_t node)
{
    QVariantList items;
    for (uint32_t index = 0; index < plist_array_get_size(node); ++index)
        items.append(valueOf(plist_array_get_item(node, index)));
    return items;
}

QVariant dictionaryOf(plist_t node)
{
    QVariantMap entries;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const IteratorMemory memory(iterator);
    while (true) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &key, &item);
        const TextMemory keyMemory(key);
        if (key == nullptr)
            return entries;
        entries.insert(QString::fromUtf8(key), valueOf(item));
    }
}

QVariant dateOf(plist_t node)
{
    int32_t seconds = 0;
    int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    return referenceDate().addSecs(seconds);
}

QVariant dataOf(plist_t node)
{
    uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return QByteArray(bytes, static_cast<qsizetype>(length));
}

QVariant textOf(plist_t node)
{
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return QString::fromUtf8(text, static_cast<qsizetype>(length));
}

QVariant integerOf(plist_t node)
{
    uint64_t value = 0;
    plist_get_uint_val(node, &value);
    return static_cast<qint64>(value);
}

QVariant realOf(plist_t node)
{
    double value = 0;
    plist_get_real_val(node, &value);
    return value;
}

QVariant booleanOf(plist_t node)
{
    uint8_t value = 0;
    plist_get_bool_val(node, &value);
    return value != 0;
}

QVariant valueOf(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return booleanOf(node);
    case PLIST_UINT:
        return integerOf(node);
    case PLIST_REAL:
        return realOf(node);
    case PLIST_STRING:
        return textOf(node);
    case PLIST_ARRAY:
        return arrayOf(node);
    case PLIST_DICT:
        return dictionaryOf(node);
    case PLIST_DATE:
        return dateOf(node);
    case PLIST_DATA:
        return dataOf(node);
    default:
        return {};
    }
}

// libplist would write characters that XML 1.0 does not allow.
QByteArray xmlText(QString text)
{
    for (QChar& character : text) {
        const char16_t code = character.unicode();
        const bool isBlank = code == u'\t' || code == u'\n' || code == u'\r';
        if ((code < u' ' && !isBlank) || code == 0xFFFE || code == 0xFFFF)
            character = QChar::ReplacementCharacter;
    }
    return text.toUtf8();
}

Node nodeOf(const QVariant& value, int depth);

Node arrayNode(const QVariantList& items, int depth)
{
    Node array(plist_new_array());
    for (const QVariant& item : items) {
        Node node = nodeOf(item, depth + 1);
        if (!node)
            return nullptr;
        plist_array_append_item(array.get(), node.release());
    }
    return array;
}

Node dictionaryNode(const QVariantMap& entries, int depth)
{
    Node dictionary(plist_new_dict());
    for (const auto& [key, item] : entries.asKeyValueRange()) {
        Node node = nodeOf(item, depth + 1);
        if (!node)
            return nullptr;
        plist_dict_set_item(dictionary.get(), xmlText(key).constData(), node.release());
    }
    return dictionary;
}

Node dateNode(const QDateTime& date)
{
    const qint64 seconds = referenceDate().secsTo(date);
    if (!date.isValid() || std::abs(seconds) > std::numeric_limits<int32_t>::max())
        return nullptr;
    return Node(plist_new_date(static_cast<int32_t>(seconds), 0));
}

Node dataNode(const QByteArray& data)
{
    return Node(plist_new_data(data.constData(), static_cast<uint64_t>(data.size())));
}

Node nodeOf(const QVariant& value, int depth)
{
    if (depth > maximumDepth)
        return nullptr;
    switch (value.typeId()) {
    case QMetaType::Bool:
        return Node(plist_new_bool(static_cast<uint8_t>(value.toBool())));
    case QMetaType::Int:
    case QMetaType::LongLong:
        // libplist keeps the bits of a negative number and writes it with its sign.
        return Node(plist_new_uint(static_cast<uint64_t>(value.toLongLong())));
    case QMetaType::Double:
        return Node(plist_new_real(value.toDouble()));
    case QMetaType::QString:
        return Node(plist_new_string(xmlText(value.toString()).constData()));
    case QMetaType::QByteArray:
        return dataNode(value.toByteArray());
    case QMetaType::QDateTime:
        return dateNode(value.toDateTime());
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return arrayNode(value.toList(), depth);
    case QMetaType::QVariantMap:
        return dictionaryNode(value.toMap(), depth);
    default:
        return nullptr;
    }
}

} // namespace

std::optional<QVariant> parsePropertyList(const QByteArray& xml)
{
    if (xml.isEmpty() || xml.size() > maximumSize || isNestedTooDeep(xml))
        return std::nullopt;
    plist_t read = nullptr;
    plist_from_xml(xml.constData(), static_cast<uint32_t>(xml.size()), &read);
    const Node root(read);
    if (!root)
        return std::nullopt;
    return valueOf(root.get());
}

std::optional<QVariantMap> dictionaryInFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const std::optional<QVariant> list = parsePropertyList(file.read(maximumSize + 1));
    if (!list || list->typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return list->toMap();
}

std::optional<QByteArray> writePropertyList(const QVariant& value)
{
    const Node root = nodeOf(value, 0);
    if (!root)
        return std::nullopt;
    char* text = nullptr;
    uint32_t length = 0;
    plist_to_xml(root.get(), &text, &length);
    if (text == nullptr)
        return std::nullopt;
    const TextMemory memory(text);
    return QByteArray(text, static_cast<qsizetype>(length));
}
