#include "card/CborItemScanner.h"

namespace {

// RFC 8949, section 3: the three high bits of an item's first byte are its major type, the five low ones its argument
// or the number of bytes that the argument takes.
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

constexpr unsigned firstFollowingArgument = 24; // one byte follows; 25: two, 26: four, 27: eight
constexpr unsigned lastFollowingArgument = 27;
constexpr unsigned indefiniteLength = 31;

} // namespace

struct CborItemScanner::Head
{
    unsigned majorType = 0;
    unsigned information = 0;
    qsizetype size = 1;
    quint64 argument = 0;

    [[nodiscard]] bool isIndefinite() const { return information == indefiniteLength; }
};

/// The head that the bytes begin with; nullopt when it is not whole. Its first byte must be there.
std::optional<CborItemScanner::Head> CborItemScanner::readHead(QByteArrayView bytes)
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

CborItemScanner::Verdict CborItemScanner::scan(QByteArrayView bytes)
{
    while (!m_finished && m_position < bytes.size()) {
        const std::optional<Head> head = readHead(bytes.sliced(m_position));
        if (!head)
            break;
        m_position += head->size;
        if (const Verdict verdict = enter(*head); verdict != Verdict::NeedsMore)
            return verdict;
        if (m_position > m_maximumSize)
            return Verdict::TooLarge;
    }
    return m_finished && m_position <= bytes.size() ? Verdict::Complete : Verdict::NeedsMore;
}

/// Takes in one head: NeedsMore, unless the item cannot be accepted.
CborItemScanner::Verdict CborItemScanner::enter(const Head& head)
{
    if (head.information > lastFollowingArgument && !head.isIndefinite())
        return Verdict::Malformed;

    switch (head.majorType) {
    case ByteString:
    case TextString:
        if (head.isIndefinite())
            return enterContainer(head);
        if (head.argument > static_cast<quint64>(m_maximumSize))
            return Verdict::TooLarge;
        m_position += static_cast<qsizetype>(head.argument);
        break;
    case Array:
    case Map:
    case Tag:
        return enterContainer(head);
    case SimpleOrFloat:
        if (head.isIndefinite()) {
            if (m_open.empty() || m_open.back())
                return Verdict::Malformed;
            m_open.pop_back();
        }
        break;
    default:
        if (head.isIndefinite())
            return Verdict::Malformed;
    }
    finishItem();
    return Verdict::NeedsMore;
}

CborItemScanner::Verdict CborItemScanner::enterContainer(const Head& head)
{
    if (head.majorType == Tag && head.isIndefinite())
        return Verdict::Malformed;
    if (m_open.size() == maximumDepth)
        return Verdict::Malformed;
    if (head.isIndefinite()) {
        m_open.emplace_back(std::nullopt);
        return Verdict::NeedsMore;
    }
    // Every element takes a byte at least.
    if (head.majorType != Tag && head.argument > static_cast<quint64>(m_maximumSize))
        return Verdict::TooLarge;
    const quint64 count = head.majorType == Tag ? 1 : head.majorType == Map ? head.argument * 2 : head.argument;
    if (count == 0)
        finishItem();
    else
        m_open.emplace_back(count);
    return Verdict::NeedsMore;
}

/// An item has ended: so have the containers that lacked nothing else.
void CborItemScanner::finishItem()
{
    while (!m_open.empty()) {
        Missing& missing = m_open.back();
        if (!missing || --*missing > 0)
            return;
        m_open.pop_back();
    }
    m_finished = true;
}
