#pragma once

#include "service/pcsc/CardTransport.h"

#include <QList>

#include <chrono>
#include <memory>

/// The system's card readers, by the system's names. Used by one thread.
class CardReaders
{
public:
    CardReaders() = default;
    Q_DISABLE_COPY(CardReaders)
    virtual ~CardReaders() = default;

    /// Names of the connected readers; none is no error.
    [[nodiscard]] virtual std::expected<QList<QByteArray>, CardFault> names() = 0;

    /// Connects to the card in that reader exclusively. The transport's destructor disconnects and leaves the card
    /// powered; it must run before that of the readers.
    [[nodiscard]] virtual std::expected<std::unique_ptr<CardTransport>, CardFault>
    connect(const QByteArray& reader) = 0;

    /// Waits until that reader has a card, or has none, at most for that time. Returns at once when the reader is lost.
    virtual void waitForCard(const QByteArray& reader, bool present, std::chrono::milliseconds longest) = 0;

    /// Reports the state of the readers of the accepted model, then each change until the watch is destroyed.
    [[nodiscard]] virtual std::unique_ptr<ReaderWatch> watch(const ReaderReport& report) = 0;

    virtual void pause(std::chrono::milliseconds time) = 0;
};
