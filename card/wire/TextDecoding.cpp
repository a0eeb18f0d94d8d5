#include "card/wire/TextDecoding.h"

#include <QStringDecoder>
#include <QStringEncoder>

#include <algorithm>
#include <array>

namespace {

// The characters of windows-1252 from 80 to 9F; zero where it has none.
constexpr char16_t firstControl = 0x80;
constexpr std::array<char16_t, 32> windows1252Characters{
    u'\u20AC', 0,         u'\u201A', u'\u0192', u'\u201E', u'\u2026', u'\u2020', u'\u2021', //
    u'\u02C6', u'\u2030', u'\u0160', u'\u2039', u'\u0152', 0,         u'\u017D', 0,         //
    0,         u'\u2018', u'\u2019', u'\u201C', u'\u201D', u'\u2022', u'\u2013', u'\u2014', //
    u'\u02DC', u'\u2122', u'\u0161', u'\u203A', u'\u0153', 0,         u'\u017E', u'\u0178',
};

bool isHighControl(QChar character)
{
    const char16_t code = character.unicode();
    return code >= firstControl && code < firstControl + windows1252Characters.size();
}

} // namespace

std::optional<QString> decodeUtf8(QByteArrayView bytes)
{
    // Stateless: otherwise an incomplete last character is kept for more bytes and not reported.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

std::optional<QString> decodeLatin1(QByteArrayView bytes)
{
    QString text = QString::fromLatin1(bytes);
    if (std::ranges::any_of(text, isHighControl))
        return std::nullopt;
    return text;
}

std::optional<QString> decodeWindows1252(QByteArrayView bytes)
{
    QString text = QString::fromLatin1(bytes);
    for (QChar& character : text) {
        if (!isHighControl(character))
            continue;
        character = windows1252Characters.at(static_cast<std::size_t>(character.unicode() - firstControl));
        if (character.isNull())
            return std::nullopt;
    }
    return text;
}

std::optional<QByteArray> encodeUtf8(QStringView text)
{
    QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    QByteArray bytes = encoder(text);
    if (encoder.hasError())
        return std::nullopt;
    return bytes;
}

std::optional<QByteArray> encodeWindows1252(QStringView text)
{
    QByteArray bytes;
    for (const QChar character : text) {
        char16_t code = character.unicode();
        if (isHighControl(character))
            return std::nullopt;
        if (code > 0xFF) {
            const auto* const found = std::ranges::find(windows1252Characters, code);
            if (found == windows1252Characters.end())
                return std::nullopt;
            code = static_cast<char16_t>(firstControl + (found - windows1252Characters.begin()));
        }
        bytes.append(static_cast<char>(code));
    }
    return bytes;
}
