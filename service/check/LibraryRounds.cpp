#include "service/check/LibraryRounds.h"

#include <QDir>

#include <malloc.h>

using namespace Qt::StringLiterals;
using Clock = std::chrono::steady_clock;

namespace {

qsizetype entriesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

/// What the process holds now.
struct Holdings
{
    qint64 memory = 0; // bytes
    qint64 descriptors = 0;
};

Holdings holdingsNow()
{
    const struct mallinfo2 memory = ::mallinfo2();
    return {.memory = static_cast<qint64>(memory.uordblks + memory.hblkhd),
            .descriptors = entriesIn(u"/proc/self/fd"_s)};
}

} // namespace

qsizetype threadsOfProcess()
{
    return entriesIn(u"/proc/self/task"_s);
}

LibraryRounds::LibraryRounds(LibraryCalls& calls, const TrialNotes& notes, RoundLimits limits,
                             const QList<QByteArray>& readers)
    : m_calls(&calls)
    , m_notes(&notes)
    , m_limits(limits)
    , m_readers(&readers)
{
}

void LibraryRounds::run()
{
    bool isSound = repeat(u"pelmora_reading_open"_s, [this] {
        const int result = m_calls->open();
        m_calls->close();
        return result;
    });
    if (m_calls->open() != PELMORA_READING_OK)
        return;
    isSound &=
        repeat(u"pelmora_reading_version"_s, [this] { return m_calls->version(PELMORA_READING_LIBRARY).result; });
    isSound &= repeat(u"pelmora_reading_readers"_s, [this] { return m_calls->readers().result; });
    if (!m_readers->isEmpty()) {
        isSound &= repeat(u"pelmora_reading_choose_readers"_s, [this] { return choose(); });
        isSound &= repeat(u"pelmora_reading_read_card"_s, [this] { return read(); });
    }
    m_calls->close();
    // What the functions keep until the closing, and lose then.
    if (isSound)
        static_cast<void>(repeat(u"pelmora_reading_close"_s, [this] { return wholeRound(); }));
    m_calls->setRound(0);
}

int LibraryRounds::choose()
{
    return m_calls->choose(m_readers->first(), m_readers->first());
}

int LibraryRounds::read()
{
    const LibraryCalls::Answer answer = m_calls->readCard();
    m_calls->judgeSurroundings(answer.place, false);
    return answer.result;
}

int LibraryRounds::wholeRound()
{
    int result = m_calls->open();
    if (result == PELMORA_READING_OK)
        result = m_calls->readers().result;
    if (!m_readers->isEmpty() && result == PELMORA_READING_OK)
        result = choose();
    if (!m_readers->isEmpty() && result == PELMORA_READING_OK)
        result = read();
    m_calls->close();
    return result;
}

bool LibraryRounds::repeat(const QString& function, const std::function<int()>& round)
{
    // The first rounds fill caches.
    const int settled = m_limits.rounds / 10;
    const Clock::time_point end = Clock::now() + m_limits.time;
    Holdings before = holdingsNow(); // now, as the first time it allocates memory that it keeps
    int first = 0;
    int number = 0;
    while (number < m_limits.rounds && Clock::now() < end) {
        m_calls->setRound(++number);
        const int result = round();
        if (number == 1)
            first = result;
        if (result != first) {
            m_notes->fault(
                u"%1, tour %2"_s.arg(function).arg(number),
                u"rend %1, et %2 au premier tour"_s.arg(readingResultText(result), readingResultText(first)));
            break;
        }
        if (number == settled)
            before = holdingsNow();
    }
    if (number < m_limits.rounds)
        m_notes->remark(u"%1 : %2 tours sur %3"_s.arg(function).arg(number).arg(m_limits.rounds));
    const qint64 measured = number - settled;
    if (measured <= 0)
        return true;
    const Holdings after = holdingsNow();
    // The smallest block of memory, and a descriptor in a hundred rounds. The allocator itself keeps some memory.
    constexpr qint64 smallestBlock = 16;
    constexpr qint64 keptByAllocator = 4096;
    constexpr qint64 fewDescriptors = 100;
    const qint64 memory = after.memory - before.memory;
    const qint64 descriptors = after.descriptors - before.descriptors;
    const bool losesMemory = memory >= smallestBlock * measured + keptByAllocator;
    const bool losesDescriptors = descriptors > 0 && descriptors * fewDescriptors >= measured;
    const QString place = u"%1, tours %2 à %3"_s.arg(function).arg(settled + 1).arg(number);
    if (losesMemory)
        m_notes->fault(place, u"perd %1 octets de mémoire par tour"_s.arg(memory / measured));
    if (losesDescriptors)
        m_notes->fault(place, u"laisse %1 descripteurs ouverts"_s.arg(descriptors));
    return !losesMemory && !losesDescriptors;
}
