#include "card/XmlBytes.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

// Characters 80 to 9F of windows-1252; 0 where the code page has none.
constexpr std::array<char16_t, 32> windows1252HighControls{
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

std::optional<QString> decodeUnicode(QByteArrayView bytes, QStringConverter::Encoding encoding)
{
    QStringDecoder decoder(encoding);
    QString text = decoder(bytes);
    // A sequence that the end cuts short is only held back, not reported; each of these encodings would show it here.
    if (encoding == QStringConverter::Utf8) {
        text += decoder(QByteArrayView("\n", 1));
        text.chop(1);
    } else if (bytes.size() % 2 != 0 || !text.isValidUtf16()) {
        return std::nullopt;
    }
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

std::optional<QString> decodeAscii(QByteArrayView bytes)
{
    const bool isAscii = std::ranges::all_of(bytes, [](char byte) { return (byte & 0x80) == 0; });
    return isAscii ? std::optional(QString::fromLatin1(bytes)) : std::nullopt;
}

std::optional<QString> decodeWindows1252(QByteArrayView bytes)
{
    QString text = QString::fromLatin1(bytes);
    for (QChar& character : text) {
        const char16_t code = character.unicode();
        if (code < 0x80 || code > 0x9F)
            continue;
        character = QChar(windows1252HighControls[code - 0x80u]);
        if (character.isNull())
            return std::nullopt;
    }
    return text;
}

/// The encoding that an XML declaration at the start of an ASCII-compatible text names, in lower case; empty without
/// one.
QByteArray declaredEncoding(QByteArrayView bytes)
{
    if (!bytes.startsWith("<?xml"))
        return {};
    // A declaration is short; a document without its end is not searched for it.
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
        return decodeUnicode(bytes, QStringConverter::Utf8);
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF"))
        return decodeUnicode(bytes, QStringConverter::Utf16);
    // Without a mark a UTF-16 document shows in the two bytes of its first "<".
    if (bytes.startsWith(QByteArrayView("<\0", 2)))
        return decodeUnicode(bytes, QStringConverter::Utf16LE);
    if (bytes.startsWith(QByteArrayView("\0<", 2)))
        return decodeUnicode(bytes, QStringConverter::Utf16BE);

    const QByteArray encoding = declaredEncoding(bytes);
    if (encoding.isEmpty() || encoding == "utf-8")
        return decodeUnicode(bytes, QStringConverter::Utf8);
    if (encoding == "iso-8859-1")
        return QString::fromLatin1(bytes);
    if (encoding == "windows-1252")
        return decodeWindows1252(bytes);
    if (encoding == "us-ascii")
        return decodeAscii(bytes);
    return std::nullopt;
}
