#pragma once

#include "service/pcsc/CardTransport.h"

#include <QList>

#include <chrono>
#include <memory>

/// The system's card readers, each known by the system's own name of it. Used by one thread.
class CardReaders
{
public:
    CardReaders() = default;
    CardReaders(const CardReaders&) = delete;
    CardReaders& operator=(const CardReaders&) = delete;
    virtual ~CardReaders() = default;

    /// The names of the readers that are connected now; none is no error.
    [[nodiscard]] virtual std::expected<QList<QByteArray>, CardFault> names() = 0;

    /// The way to the card in that reader, which nobody else may use meanwhile. The transport is given back, and the
    /// card left powered, by its destruction, which comes before that of the readers.
    [[nodiscard]] virtual std::expected<std::unique_ptr<CardTransport>, CardFault>
    connect(const QByteArray& reader) = 0;

    /// Waits until there is a card in that reader, or none, but no longer than that; no longer at all when the reader
    /// is lost.
    virtual void waitForCard(const QByteArray& reader, bool present, std::chrono::milliseconds longest) = 0;

    /// Waits for as long.
    virtual void pause(std::chrono::milliseconds time) = 0;
};
