#include "card/wire/ServiceMessageScanner.h"

#include <algorithm>
#include <limits>

namespace {

// RFC 8949, section 3: the high three bits of an item's first byte are its major type; the low five are its argument,
// or tell the size of the argument.
enum MajorType : unsigned
{
    UnsignedInteger = 0,
    NegativeInteger = 1,
    ByteString = 2,
    TextString = 3,
    Array = 4,
    Map = 5,
    Tag = 6,
    SimpleOrFloat = 7,
};

constexpr unsigned nullValue = 22;
constexpr unsigned firstFollowingArgument = 24; // one byte follows; 25: two, 26: four, 27: eight
constexpr unsigned lastFollowingArgument = 27;
constexpr unsigned indefiniteLength = 31;

constexpr quint64 messageItems = 2; // the number and the body
constexpr quint64 largestNumber = std::numeric_limits<qint64>::max();

} // namespace

struct ServiceMessageScanner::Head
{
    unsigned majorType = 0;
    unsigned information = 0;
    qsizetype size = 1;
    quint64 argument = 0;

    [[nodiscard]] bool isIndefinite() const { return information == indefiniteLength; }
    [[nodiscard]] bool isReserved() const { return information > lastFollowingArgument && !isIndefinite(); }
    [[nodiscard]] bool isBreak() const { return majorType == SimpleOrFloat && isIndefinite(); }
    [[nodiscard]] bool isString() const { return majorType == ByteString || majorType == TextString; }
    [[nodiscard]] bool isScalar() const
    {
        return isString() || ((majorType <= NegativeInteger || majorType == SimpleOrFloat) && !isIndefinite());
    }
};

/// The head at the start of the bytes, which must not be empty; nullopt when it is incomplete.
std::optional<ServiceMessageScanner::Head> ServiceMessageScanner::readHead(QByteArrayView bytes)
{
    const unsigned first = static_cast<unsigned char>(bytes.front());
    Head head{.majorType = first >> 5U, .information = first & 0x1FU};
    if (head.information < firstFollowingArgument) {
        head.argument = head.information;
    } else if (head.information <= lastFollowingArgument) {
        head.size += qsizetype{1} << (head.information - firstFollowingArgument);
        if (bytes.size() < head.size)
            return std::nullopt;
        for (qsizetype index = 1; index < head.size; ++index)
            head.argument = (head.argument << 8U) | static_cast<unsigned char>(bytes[index]);
    }
    return head;
}

ServiceMessageScanner::Verdict ServiceMessageScanner::scan(QByteArrayView bytes)
{
    while (!m_finished && m_position < bytes.size()) {
        const QByteArrayView rest = bytes.sliced(m_position);
        const std::optional<Head> head = readHead(rest);
        if (!head)
            break;
        if (expectsKey() && !head->isBreak()) {
            if (const Verdict verdict = judgeKey(*head, rest); verdict != Verdict::Complete)
                return verdict;
        }
        m_position += head->size;
        if (const Verdict verdict = enter(*head); verdict != Verdict::NeedsMore)
            return verdict;
        if (m_position > m_maximumSize)
            return Verdict::TooLarge;
    }
    return m_finished && m_position <= bytes.size() ? Verdict::Complete : Verdict::NeedsMore;
}

bool ServiceMessageScanner::expectsKey() const
{
    return !m_open.empty() && m_open.back().kind == Level::Kind::Body && m_open.back().entered % 2 == 0;
}

bool ServiceMessageScanner::isKnown(QByteArrayView key) const
{
    return m_keys.empty() || std::ranges::any_of(m_keys, [key](QLatin1StringView known) {
               return key == QByteArrayView(known.data(), known.size());
           });
}

/// Complete for an accepted key. A key must not be of indefinite length.
ServiceMessageScanner::Verdict ServiceMessageScanner::judgeKey(const Head& head, QByteArrayView rest) const
{
    if (head.majorType != TextString || head.information > lastFollowingArgument || head.argument > maximumKey)
        return Verdict::Malformed;
    const auto size = static_cast<qsizetype>(head.argument);
    if (rest.size() < head.size + size)
        return Verdict::NeedsMore;
    return isKnown(rest.sliced(head.size, size)) ? Verdict::Complete : Verdict::Malformed;
}

/// Whether an item with this head is allowed here. Keys were checked before.
bool ServiceMessageScanner::expects(const Head& head) const
{
    if (m_open.empty())
        return head.majorType == Array && (head.isIndefinite() || head.argument == messageItems);
    const Level& level = m_open.back();
    switch (level.kind) {
    case Level::Kind::Message:
        if (level.entered == 0)
            return head.majorType == UnsignedInteger && !head.isIndefinite() && head.argument <= largestNumber;
        return level.entered == 1 &&
               (head.majorType == Map || (head.majorType == SimpleOrFloat && head.information == nullValue));
    case Level::Kind::Body:
        return head.isScalar() || head.majorType == Array;
    case Level::Kind::List:
        return head.isScalar();
    case Level::Kind::Parts:
        return head.majorType == level.majorType && !head.isIndefinite();
    }
    return false;
}

/// Handles one head: NeedsMore, unless the message is refused.
ServiceMessageScanner::Verdict ServiceMessageScanner::enter(const Head& head)
{
    if (head.isReserved())
        return Verdict::Malformed;
    if (head.isBreak())
        return leaveContainer();
    if (!expects(head))
        return Verdict::Malformed;
    if (++m_items > maximumItems)
        return Verdict::TooLarge;
    if (head.majorType == Array || head.majorType == Map || (head.isString() && head.isIndefinite()))
        return enterContainer(head);
    if (head.isString()) {
        if (head.argument > static_cast<quint64>(m_maximumSize))
            return Verdict::TooLarge;
        m_position += static_cast<qsizetype>(head.argument);
    }
    finishItem();
    return Verdict::NeedsMore;
}

ServiceMessageScanner::Verdict ServiceMessageScanner::enterContainer(const Head& head)
{
    Level level;
    level.majorType = head.majorType;
    if (head.isString())
        level.kind = Level::Kind::Parts;
    else if (head.majorType == Map)
        level.kind = Level::Kind::Body;
    else if (!m_open.empty())
        level.kind = Level::Kind::List;

    if (!head.isIndefinite()) {
        if (head.argument > maximumItems)
            return Verdict::TooLarge;
        level.total = head.majorType == Map ? head.argument * 2 : head.argument;
    }
    if (level.total == 0U)
        finishItem();
    else
        m_open.push_back(level);
    return Verdict::NeedsMore;
}

/// A break ends a container of indefinite length, if its items are complete.
ServiceMessageScanner::Verdict ServiceMessageScanner::leaveContainer()
{
    if (m_open.empty() || m_open.back().total)
        return Verdict::Malformed;
    const Level& level = m_open.back();
    if ((level.kind == Level::Kind::Message && level.entered != messageItems) ||
        (level.kind == Level::Kind::Body && level.entered % 2 != 0))
        return Verdict::Malformed;
    m_open.pop_back();
    finishItem();
    return Verdict::NeedsMore;
}

/// An item has ended, and so may the containers around it.
void ServiceMessageScanner::finishItem()
{
    while (!m_open.empty()) {
        Level& level = m_open.back();
        if (++level.entered != level.total)
            return;
        m_open.pop_back();
    }
    m_finished = true;
}
