#include "card/wire/XmlBytes.h"

#include "card/wire/TextDecoding.h"

#include <QStringDecoder>

#include <algorithm>

namespace {

std::optional<QString> decodeUtf16(QByteArrayView bytes, QStringConverter::Encoding encoding)
{
    QStringDecoder decoder(encoding);
    QString text = decoder(bytes);
    // Half a unit or half a surrogate pair at the end is not reported by the decoder.
    if (bytes.size() % 2 != 0 || decoder.hasError() || !text.isValidUtf16())
        return std::nullopt;
    return text;
}

std::optional<QString> decodeAscii(QByteArrayView bytes)
{
    const bool isAscii = std::ranges::all_of(bytes, [](char byte) { return (byte & 0x80) == 0; });
    return isAscii ? std::optional(QString::fromLatin1(bytes)) : std::nullopt;
}

/// The encoding in the XML declaration of an ASCII-compatible text, in lower case; empty without one.
QByteArray declaredEncoding(QByteArrayView bytes)
{
    if (!bytes.startsWith("<?xml"))
        return {};
    // The search for the declaration's end is limited.
    constexpr qsizetype longestDeclaration = 256;
    const qsizetype end = bytes.first(std::min(bytes.size(), longestDeclaration)).indexOf("?>");
    if (end < 0)
        return {};
    const QByteArray declaration = bytes.first(end).toByteArray();
    const qsizetype keyword = declaration.indexOf("encoding");
    if (keyword < 0)
        return {};
    const QByteArray value = declaration.sliced(keyword + qsizetype(sizeof "encoding") - 1).trimmed();
    if (!value.startsWith('='))
        return {};
    const QByteArray quoted = value.sliced(1).trimmed();
    if (!quoted.startsWith('"') && !quoted.startsWith('\''))
        return {};
    const qsizetype close = quoted.indexOf(quoted.front(), 1);
    return close < 0 ? QByteArray() : quoted.sliced(1, close - 1).toLower();
}

} // namespace

std::optional<QString> decodeXmlBytes(QByteArrayView bytes)
{
    if (bytes.startsWith("\xEF\xBB\xBF"))
        return decodeUtf8(bytes);
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF"))
        return decodeUtf16(bytes, QStringConverter::Utf16);
    // UTF-16 without a byte order mark is recognised by the first "<".
    if (bytes.startsWith(QByteArrayView("<\0", 2)))
        return decodeUtf16(bytes, QStringConverter::Utf16LE);
    if (bytes.startsWith(QByteArrayView("\0<", 2)))
        return decodeUtf16(bytes, QStringConverter::Utf16BE);

    const QByteArray encoding = declaredEncoding(bytes);
    if (encoding.isEmpty() || encoding == "utf-8")
        return decodeUtf8(bytes);
    // Here 80 to 9F are the control characters that the document declares.
    if (encoding == "iso-8859-1")
        return QString::fromLatin1(bytes);
    if (encoding == "windows-1252")
        return decodeWindows1252(bytes);
    if (encoding == "us-ascii")
        return decodeAscii(bytes);
    return std::nullopt;
}
