#pragma once

#include "service/pcsc/CardFault.h"
#include "service/pcsc/ReaderEvents.h"

#include <QByteArray>
#include <QList>

#include <chrono>
#include <expected>
#include <optional>
#include <utility>

/// A reader's state, found without connecting to it.
struct ReaderState
{
    bool hasCard = false;
    bool isMute = false;  // a card that does not answer
    bool isInUse = false; // by any program
    bool isKept = false;  // exclusively
    QByteArray atr;       // the card's answer to reset
};

/// A reader's state as PC/SC told it last.
struct KnownReader
{
    QByteArray name;
    unsigned long state = 0; // SCARD_STATE_UNAWARE

    [[nodiscard]] WatchedReader watched() const;
};

/// A connection to the PC/SC service, closed by its destructor.
class PcscContext
{
public:
    [[nodiscard]] static std::expected<PcscContext, CardFault> establish();

    PcscContext(PcscContext&& other) noexcept
        : m_handle(std::exchange(other.m_handle, 0))
    {
    }
    PcscContext& operator=(PcscContext&& other) noexcept;
    Q_DISABLE_COPY(PcscContext)
    ~PcscContext();

    /// System names of the connected readers; none is no error.
    [[nodiscard]] std::expected<QList<QByteArray>, CardFault> readers() const;

    [[nodiscard]] std::expected<ReaderState, CardFault> state(const QByteArray& reader) const;

    /// Waits until that reader has a card, or has none, at most for that time. False when the time was over.
    [[nodiscard]] std::expected<bool, CardFault> waitForCard(const QByteArray& reader, bool present,
                                                             std::chrono::milliseconds longest) const;

    /// Waits until the state of one of the readers differs from the known one, which it updates, or a reader comes or
    /// goes; at most for that time, if there is one. False when the time was over.
    [[nodiscard]] std::expected<bool, CardFault> waitForChange(QList<KnownReader>& readers,
                                                               std::optional<std::chrono::milliseconds> longest) const;

    /// Ends a call of another thread that waits; without effect when none waits yet.
    void cancel() const;

    [[nodiscard]] long handle() const { return m_handle; }

private:
    explicit PcscContext(long handle)
        : m_handle(handle)
    {
    }

    long m_handle; // 0: none
};
