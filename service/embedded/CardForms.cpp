#include "service/embedded/CardForms.h"

#include <QDate>
#include <QStringDecoder>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype yearDigits = 4;
constexpr qsizetype dateDigits = 8;
constexpr qsizetype numberDigits = 13;
constexpr qsizetype keyedNumberDigits = 15;

bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

bool isControl(char byte)
{
    return static_cast<quint8>(byte) < 0x20 || byte == 0x7F;
}

QByteArrayView withoutFiller(QByteArrayView bytes)
{
    while (!bytes.isEmpty() && (bytes.back() == ' ' || bytes.back() == '\0'))
        bytes.chop(1);
    return bytes;
}

std::optional<QString> fromText(QByteArrayView bytes)
{
    bytes = withoutFiller(bytes);
    if (std::ranges::any_of(bytes, isControl))
        return std::nullopt;
    QString text = QString::fromLatin1(bytes);
    // 80 to 9F are no characters in ISO 8859-1. They are replaced, so that the card can still be read.
    const auto isUnknown = [](QChar c) { return c >= u'\x80' && c <= u'\x9F'; };
    std::ranges::replace_if(text, isUnknown, QChar(QChar::ReplacementCharacter));
    return text;
}

std::optional<QString> fromUtf8(QByteArrayView bytes)
{
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decode(withoutFiller(bytes));
    if (decode.hasError())
        return std::nullopt;
    const auto isPrintable = [](char32_t character) { return QChar::isPrint(character); };
    return std::ranges::all_of(text.toUcs4(), isPrintable) ? std::optional(std::move(text)) : std::nullopt;
}

std::optional<QString> fromDigits(QByteArrayView bytes)
{
    bytes = withoutFiller(bytes);
    return std::ranges::all_of(bytes, isDigit) ? std::optional(QString::fromLatin1(bytes)) : std::nullopt;
}

std::optional<QString> fromPackedDigits(QByteArrayView bytes)
{
    QByteArray digits = bytes.toByteArray().toHex();
    while (digits.endsWith('f'))
        digits.chop(1);
    return std::ranges::all_of(digits, isDigit) ? std::optional(QString::fromLatin1(digits)) : std::nullopt;
}

/// 97 minus the number modulo 97, with 19 and 18 for the departments 2A and 2B.
QString numberKey(QStringView number)
{
    constexpr quint64 modulus = 97;
    QString digits = number.toString();
    digits.replace("2A"_L1, "19"_L1).replace("2B"_L1, "18"_L1);
    return u"%1"_s.arg(modulus - digits.toULongLong() % modulus, 2, 10, QLatin1Char('0'));
}

std::optional<QString> fromNumber(QByteArrayView bytes)
{
    bytes = withoutFiller(bytes);
    constexpr qsizetype department = 5;
    const auto isOfNumber = [&bytes](qsizetype place) {
        const char byte = bytes[place];
        return isDigit(byte) || (place == department + 1 && bytes[department] == '2' && (byte == 'A' || byte == 'B'));
    };
    if (!bytes.isEmpty() && bytes.size() != numberDigits && bytes.size() != keyedNumberDigits)
        return std::nullopt;
    for (qsizetype place = 0; place < bytes.size(); ++place) {
        if (!isOfNumber(place))
            return std::nullopt;
    }
    const QString number = QString::fromLatin1(bytes);
    // No key is added to zeros.
    const bool isZeros = std::ranges::all_of(bytes, [](char byte) { return byte == '0'; });
    return number.size() == numberDigits && !isZeros ? number + numberKey(number) : number;
}

/// YYYYMMDD with zeros for unknown parts (incomplete civil status); empty for none, absent if impossible.
std::optional<QString> dateDigitsOf(QByteArrayView bytes)
{
    if (withoutFiller(bytes).isEmpty())
        return QString();
    if (bytes.size() != dateDigits)
        return std::nullopt;
    QString digits = QString::fromLatin1(bytes);
    digits.replace(u' ', u'0');
    if (!std::ranges::all_of(digits, [](QChar c) { return c >= u'0' && c <= u'9'; }))
        return std::nullopt;
    const int year = digits.first(yearDigits).toInt();
    const int month = digits.sliced(yearDigits, 2).toInt();
    const int day = digits.last(2).toInt();
    return isPossibleDate(year, month, day) ? std::optional(std::move(digits)) : std::nullopt;
}

std::optional<QString> fromDate(QByteArrayView bytes)
{
    std::optional<QString> digits = dateDigitsOf(bytes);
    if (!digits || digits->isEmpty())
        return digits;
    return digits->last(2) + digits->sliced(yearDigits, 2) + digits->first(yearDigits);
}

std::optional<QString> fromDateToShort(QByteArrayView bytes)
{
    std::optional<QString> digits = dateDigitsOf(bytes);
    if (!digits || digits->isEmpty())
        return digits;
    // A short date cannot show an unknown year: 00 is 2000.
    return digits->first(yearDigits).toInt() == 0 ? QString() : digits->sliced(2);
}

std::optional<QString> fromAnything(QByteArrayView bytes)
{
    return QString::fromLatin1(bytes.toByteArray().toHex().toUpper());
}

} // namespace

bool isPossibleDate(int year, int month, int day)
{
    // For an unknown year, as in a leap year.
    constexpr int leapYear = 2000;
    constexpr int months = 12;
    constexpr int days = 31;
    if (month > months)
        return false;
    return day <= (month == 0 ? days : QDate(year == 0 ? leapYear : year, month, 1).daysInMonth());
}

std::optional<QString> cardText(CardForm form, QByteArrayView bytes)
{
    struct Converter
    {
        CardForm form = {};
        std::optional<QString> (*convert)(QByteArrayView bytes) = nullptr;
    };
    static constexpr std::array converters{
        Converter{CardForm::Text, fromText},
        Converter{CardForm::Utf8, fromUtf8},
        Converter{CardForm::Digits, fromDigits},
        Converter{CardForm::PackedDigits, fromPackedDigits},
        Converter{CardForm::Number, fromNumber},
        Converter{CardForm::Date, fromDate},
        Converter{CardForm::ShortDate, fromDateToShort},
        Converter{CardForm::Hexadecimal, fromAnything},
    };
    return std::ranges::find(converters, form, &Converter::form)->convert(bytes);
}
