#include "tests/service/pcsc/FakePcsc.h"

#include <algorithm>

#include <winscard.h>

using namespace std::chrono_literals;

namespace {

FakePcsc* current = nullptr;

constexpr const char* allReaderNames = "\\\\?PnP?\\Notification";

} // namespace

const unsigned long FakePcsc::empty = SCARD_STATE_EMPTY;
const unsigned long FakePcsc::card = SCARD_STATE_PRESENT;
const unsigned long FakePcsc::mute = SCARD_STATE_MUTE;
const unsigned long FakePcsc::inUse = SCARD_STATE_INUSE;
const unsigned long FakePcsc::lost = SCARD_STATE_UNAVAILABLE;

FakePcsc& FakePcsc::running()
{
    return *current;
}

FakePcsc::FakePcsc()
{
    current = this;
}

FakePcsc::~FakePcsc()
{
    current = nullptr;
}

void FakePcsc::change()
{
    m_changed.notify_all();
}

void FakePcsc::setState(const QByteArray& reader, unsigned long state)
{
    const std::lock_guard lock(m_mutex);
    const auto known = std::ranges::find(m_readers, reader, &Reader::name);
    if (known == m_readers.end())
        m_readers.append({reader, state});
    else
        known->state = state;
    change();
}

void FakePcsc::unplug(const QByteArray& reader)
{
    const std::lock_guard lock(m_mutex);
    m_readers.removeIf([&reader](const Reader& known) { return known.name == reader; });
    change();
}

void FakePcsc::stop()
{
    const std::lock_guard lock(m_mutex);
    m_isUp = false;
    m_contexts.clear();
    change();
}

void FakePcsc::start()
{
    const std::lock_guard lock(m_mutex);
    m_isUp = true;
}

void FakePcsc::restart()
{
    const std::lock_guard lock(m_mutex);
    m_contexts.clear();
    change();
}

void FakePcsc::plugInAfterList(const QByteArray& reader)
{
    const std::lock_guard lock(m_mutex);
    m_late = reader;
}

bool FakePcsc::isWaitedFor()
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, 10s, [this] { return m_waiting > 0; });
}

int FakePcsc::contexts()
{
    const std::lock_guard lock(m_mutex);
    return static_cast<int>(m_contexts.size());
}

int FakePcsc::attempts()
{
    const std::lock_guard lock(m_mutex);
    return m_attempts;
}

long FakePcsc::establish(long* context)
{
    const std::lock_guard lock(m_mutex);
    ++m_attempts;
    if (!m_isUp)
        return SCARD_E_NO_SERVICE;
    m_contexts.append(++m_lastContext);
    *context = m_lastContext;
    return SCARD_S_SUCCESS;
}

long FakePcsc::release(long context)
{
    const std::lock_guard lock(m_mutex);
    return m_contexts.removeOne(context) ? SCARD_S_SUCCESS : SCARD_E_INVALID_HANDLE;
}

long FakePcsc::list(long context, char* names, unsigned long* size)
{
    const std::lock_guard lock(m_mutex);
    if (!m_contexts.contains(context))
        return SCARD_E_INVALID_HANDLE;
    QByteArray all;
    for (const Reader& reader : m_readers)
        all += reader.name + '\0';
    all += '\0';
    if (names != nullptr) {
        if (*size < static_cast<unsigned long>(all.size()))
            return SCARD_E_INSUFFICIENT_BUFFER;
        std::ranges::copy(all, names);
        if (m_late)
            m_readers.append({*std::exchange(m_late, std::nullopt), SCARD_STATE_EMPTY});
    }
    *size = static_cast<unsigned long>(all.size());
    return all.size() > 1 ? SCARD_S_SUCCESS : SCARD_E_NO_READERS_AVAILABLE;
}

/// Whether a state differs from the one that the caller knows.
bool FakePcsc::update(QList<State>& states, qsizetype readersBefore) const
{
    bool hasChanged = false;
    for (State& state : states) {
        if (state.name == allReaderNames) {
            hasChanged = hasChanged || m_readers.size() != readersBefore;
            continue;
        }
        const auto reader = std::ranges::find(m_readers, state.name, &Reader::name);
        state.event = reader == m_readers.end() ? SCARD_STATE_UNKNOWN : reader->state;
        if (state.event != state.current) {
            state.event |= SCARD_STATE_CHANGED;
            hasChanged = true;
        }
    }
    return hasChanged;
}

long FakePcsc::waitForChange(long context, unsigned long milliseconds, QList<State>& states)
{
    std::unique_lock lock(m_mutex);
    if (!m_contexts.contains(context))
        return m_isUp ? SCARD_E_INVALID_HANDLE : SCARD_E_NO_SERVICE;
    const qsizetype readersBefore = m_readers.size();
    const auto hasEnded = [&] {
        return !m_contexts.contains(context) || m_cancelled == context || update(states, readersBefore);
    };
    bool isOver = true;
    if (milliseconds == INFINITE) {
        ++m_waiting;
        m_changed.notify_all();
        m_changed.wait(lock, hasEnded);
        --m_waiting;
    } else {
        isOver = m_changed.wait_for(lock, std::chrono::milliseconds(milliseconds), hasEnded);
    }
    if (!m_contexts.contains(context))
        return SCARD_F_COMM_ERROR;
    if (m_cancelled == context)
        return SCARD_E_CANCELLED;
    return isOver ? SCARD_S_SUCCESS : SCARD_E_TIMEOUT;
}

long FakePcsc::cancel(long context)
{
    const std::lock_guard lock(m_mutex);
    m_cancelled = context;
    change();
    return SCARD_S_SUCCESS;
}

// The functions that PcscContext calls.

LONG SCardEstablishContext(DWORD, LPCVOID, LPCVOID, LPSCARDCONTEXT context)
{
    return FakePcsc::running().establish(context);
}

LONG SCardReleaseContext(SCARDCONTEXT context)
{
    return FakePcsc::running().release(context);
}

LONG SCardListReaders(SCARDCONTEXT context, LPCSTR, LPSTR names, LPDWORD size)
{
    return FakePcsc::running().list(context, names, size);
}

LONG SCardGetStatusChange(SCARDCONTEXT context, DWORD milliseconds, SCARD_READERSTATE* states, DWORD count)
{
    QList<FakePcsc::State> asked;
    for (DWORD index = 0; index < count; ++index)
        asked.append({.name = states[index].szReader, .current = states[index].dwCurrentState});
    const LONG code = FakePcsc::running().waitForChange(context, milliseconds, asked);
    for (DWORD index = 0; index < count; ++index)
        states[index].dwEventState = asked.at(static_cast<qsizetype>(index)).event;
    return code;
}

LONG SCardCancel(SCARDCONTEXT context)
{
    return FakePcsc::running().cancel(context);
}
