#pragma once

#include "service/pcsc/CardFault.h"

#include <QByteArray>
#include <QList>

#include <chrono>
#include <expected>
#include <utility>

/// What a reader tells without being connected to.
struct ReaderState
{
    bool hasCard = false;
    bool isMute = false;  // there is a card, and it does not answer when it is powered
    bool isInUse = false; // by whatever program
    bool isKept = false;  // by a program that shares it with no other
    QByteArray atr;       // what the card says of itself when it is powered
};

/// A connection to the system's service for readers (PC/SC), which ends with it.
class PcscContext
{
public:
    [[nodiscard]] static std::expected<PcscContext, CardFault> establish();

    PcscContext(PcscContext&& other) noexcept
        : m_handle(std::exchange(other.m_handle, 0))
    {
    }
    PcscContext& operator=(PcscContext&& other) noexcept;
    PcscContext(const PcscContext&) = delete;
    PcscContext& operator=(const PcscContext&) = delete;
    ~PcscContext();

    /// The system's names of the readers that are connected now; none is no error.
    [[nodiscard]] std::expected<QList<QByteArray>, CardFault> readers() const;

    /// What a reader tells at this moment.
    [[nodiscard]] std::expected<ReaderState, CardFault> state(const QByteArray& reader) const;

    /// Waits until there is a card in that reader, or none, but no longer than that. The value is whether it came so.
    [[nodiscard]] std::expected<bool, CardFault> waitForCard(const QByteArray& reader, bool present,
                                                             std::chrono::milliseconds longest) const;

    [[nodiscard]] long handle() const { return m_handle; }

private:
    explicit PcscContext(long handle)
        : m_handle(handle)
    {
    }

    long m_handle; // 0: none
};
