#include "service/pcsc/PcscContext.h"

#include <type_traits>
#include <vector>

#include <winscard.h>

static_assert(std::is_same_v<SCARDCONTEXT, long>);

namespace {

/// Gets the reader's state when it differs from the given one or the time is over.
std::expected<void, CardFault> ask(SCARDCONTEXT context, SCARD_READERSTATE& state, std::chrono::milliseconds longest)
{
    state.dwCurrentState = state.dwEventState & ~DWORD{SCARD_STATE_CHANGED};
    const LONG code = ::SCardGetStatusChange(context, static_cast<DWORD>(longest.count()), &state, 1);
    if (code != SCARD_S_SUCCESS && code != SCARD_E_TIMEOUT)
        return std::unexpected(cardFault(code));
    if ((state.dwEventState & (SCARD_STATE_UNKNOWN | SCARD_STATE_UNAVAILABLE)) != 0)
        return std::unexpected(CardFault::ReaderLost);
    return {};
}

/// The name must outlive the state.
SCARD_READERSTATE stateOf(const char* reader)
{
    SCARD_READERSTATE state{};
    state.szReader = reader;
    state.dwEventState = SCARD_STATE_UNAWARE;
    return state;
}

// The reader whose state stands for the number of readers.
constexpr const char* allReaders = R"(\\?PnP?\Notification)";
constexpr unsigned countShift = 16; // of the number of movements in a state

bool isSet(const SCARD_READERSTATE& state, DWORD flag)
{
    return (state.dwEventState & flag) != 0;
}

} // namespace

std::expected<PcscContext, CardFault> PcscContext::establish()
{
    SCARDCONTEXT handle = 0;
    const LONG code = ::SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, &handle);
    if (code == SCARD_S_SUCCESS)
        return PcscContext(handle);
    const CardFault fault = cardFault(code);
    return std::unexpected(fault == CardFault::ServiceLost ? CardFault::ServiceDown : fault);
}

PcscContext& PcscContext::operator=(PcscContext&& other) noexcept
{
    std::swap(m_handle, other.m_handle);
    return *this;
}

PcscContext::~PcscContext()
{
    if (m_handle != 0)
        ::SCardReleaseContext(m_handle);
}

std::expected<QList<QByteArray>, CardFault> PcscContext::readers() const
{
    // A reader may be connected between the two calls: then both are repeated.
    for (;;) {
        DWORD size = 0;
        LONG code = ::SCardListReaders(m_handle, nullptr, nullptr, &size);
        QByteArray names(static_cast<qsizetype>(size), '\0');
        if (code == SCARD_S_SUCCESS)
            code = ::SCardListReaders(m_handle, nullptr, names.data(), &size);
        if (code == SCARD_E_NO_READERS_AVAILABLE)
            return QList<QByteArray>();
        if (code == SCARD_E_INSUFFICIENT_BUFFER)
            continue;
        if (code != SCARD_S_SUCCESS)
            return std::unexpected(cardFault(code));
        names.truncate(static_cast<qsizetype>(size));
        QList<QByteArray> readers = names.split('\0');
        readers.removeAll(QByteArray());
        return readers;
    }
}

std::expected<ReaderState, CardFault> PcscContext::state(const QByteArray& reader) const
{
    SCARD_READERSTATE state = stateOf(reader.constData());
    if (const auto asked = ask(m_handle, state, {}); !asked)
        return std::unexpected(asked.error());
    return ReaderState{.hasCard = isSet(state, SCARD_STATE_PRESENT),
                       .isMute = isSet(state, SCARD_STATE_MUTE),
                       .isInUse = isSet(state, SCARD_STATE_INUSE | SCARD_STATE_EXCLUSIVE),
                       .isKept = isSet(state, SCARD_STATE_EXCLUSIVE),
                       .atr = QByteArray(reinterpret_cast<const char*>(state.rgbAtr),
                                         static_cast<qsizetype>(std::min(state.cbAtr, DWORD{sizeof state.rgbAtr})))};
}

std::expected<bool, CardFault> PcscContext::waitForCard(const QByteArray& reader, bool present,
                                                        std::chrono::milliseconds longest) const
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + longest;
    SCARD_READERSTATE state = stateOf(reader.constData());
    // The first call returns at once.
    for (std::chrono::milliseconds left{0};;) {
        if (const auto asked = ask(m_handle, state, left); !asked)
            return std::unexpected(asked.error());
        if (isSet(state, SCARD_STATE_PRESENT) == present)
            return true;
        left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (left.count() <= 0)
            return false;
    }
}

WatchedReader KnownReader::watched() const
{
    const auto has = [this](unsigned long flag) { return (state & flag) != 0; };
    return {.name = name,
            .isConnected = !has(SCARD_STATE_UNKNOWN | SCARD_STATE_UNAVAILABLE),
            .hasCard = has(SCARD_STATE_PRESENT),
            .isMute = has(SCARD_STATE_MUTE),
            .movements = static_cast<unsigned>(state >> countShift)};
}

std::expected<bool, CardFault> PcscContext::waitForChange(QList<KnownReader>& readers,
                                                          std::optional<std::chrono::milliseconds> longest) const
{
    std::vector<SCARD_READERSTATE> states;
    for (const KnownReader& reader : readers) {
        states.push_back(stateOf(reader.name.constData()));
        states.back().dwCurrentState = reader.state;
    }
    states.push_back(stateOf(allReaders));
    const LONG code = ::SCardGetStatusChange(m_handle, longest ? static_cast<DWORD>(longest->count()) : DWORD{INFINITE},
                                             states.data(), static_cast<DWORD>(states.size()));
    if (code != SCARD_S_SUCCESS && code != SCARD_E_TIMEOUT)
        return std::unexpected(cardFault(code));
    if (code == SCARD_E_TIMEOUT)
        return false;
    for (std::size_t index = 0; KnownReader & reader : readers)
        reader.state = states[index++].dwEventState & ~DWORD{SCARD_STATE_CHANGED};
    return true;
}

void PcscContext::cancel() const
{
    ::SCardCancel(m_handle);
}
