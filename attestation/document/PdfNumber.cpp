#include "attestation/document/PdfNumber.h"

#include <array>
#include <charconv>
#include <string_view>

std::string pdfNumber(double value)
{
    constexpr int decimals = 4;
    std::array<char, 64> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): it is written before it is read
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals);
    if (error != std::errc())
        return "0";
    std::string text(buffer.data(), end);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text == "-0" ? "0" : text;
}

std::string hexadecimal(unsigned code)
{
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (unsigned shift = 16; shift > 0; shift -= 4)
        text += digits[(code >> (shift - 4)) & 0xfU];
    return text;
}

std::string hexadecimal(QStringView text)
{
    std::string digits;
    for (const QChar unit : text)
        digits += hexadecimal(unsigned(unit.unicode()));
    return digits;
}

std::string pdfString(QStringView text)
{
    return "<FEFF" + hexadecimal(text) + '>';
}
