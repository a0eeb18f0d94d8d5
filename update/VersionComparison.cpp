#include "update/VersionComparison.h"

#include <algorithm>
#include <vector>

namespace {

constexpr qsizetype maximumLength = 64;

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

bool isLetter(QChar character)
{
    return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z');
}

bool isSeparator(QChar character)
{
    return QStringView(u".-+~_").contains(character);
}

// The numbers and words of a version. Leading zeros are removed, so that the longer of two numbers is the larger one.
std::vector<QStringView> partsOf(QStringView version)
{
    std::vector<QStringView> parts;
    while (!version.isEmpty()) {
        const bool isNumber = isDigit(version.front());
        const auto* const end = std::ranges::find_if(
            version, [isNumber](QChar character) { return isNumber ? !isDigit(character) : !isLetter(character); });
        QStringView part = version.first(end - version.begin());
        version = version.sliced(std::max<qsizetype>(part.size(), 1));
        if (part.isEmpty())
            continue;
        while (isNumber && part.size() > 1 && part.front() == u'0')
            part = part.sliced(1);
        parts.push_back(part);
    }
    return parts;
}

// A word is older than a number.
std::weak_ordering comparePart(QStringView left, QStringView right)
{
    const bool leftIsNumber = isDigit(left.front());
    const bool rightIsNumber = isDigit(right.front());
    if (leftIsNumber != rightIsNumber)
        return leftIsNumber <=> rightIsNumber;
    if (leftIsNumber && left.size() != right.size())
        return left.size() <=> right.size();
    return left.compare(right, leftIsNumber ? Qt::CaseSensitive : Qt::CaseInsensitive) <=> 0;
}

} // namespace

bool isVersion(QStringView text)
{
    if (text.isEmpty() || text.size() > maximumLength || isSeparator(text.front()))
        return false;
    return std::ranges::all_of(
        text, [](QChar character) { return isDigit(character) || isLetter(character) || isSeparator(character); });
}

std::weak_ordering compareVersions(QStringView left, QStringView right)
{
    const std::vector<QStringView> leftParts = partsOf(left);
    const std::vector<QStringView> rightParts = partsOf(right);
    const std::size_t count = std::max(leftParts.size(), rightParts.size());
    const auto partAt = [](const std::vector<QStringView>& parts, std::size_t index) {
        return index < parts.size() ? parts[index] : QStringView(u"0");
    };
    for (std::size_t index = 0; index < count; ++index) {
        const std::weak_ordering order = comparePart(partAt(leftParts, index), partAt(rightParts, index));
        if (order != std::weak_ordering::equivalent)
            return order;
    }
    return std::weak_ordering::equivalent;
}
