#pragma once

#include "service/pcsc/CardFault.h"

#include <QByteArray>
#include <QList>

#include <expected>
#include <optional>

/// A reader and its card, without what the card says.
struct WatchedReader
{
    QByteArray name; // PC/SC's name
    bool isConnected = true;
    bool hasCard = false;
    bool isMute = false;    // a card that does not answer
    unsigned movements = 0; // how often a card was inserted or removed

    friend bool operator==(const WatchedReader&, const WatchedReader&) = default;
};

/// Changes of the system's card readers. Used by one thread.
class ReaderEvents
{
public:
    using Readers = std::expected<QList<WatchedReader>, CardFault>;

    ReaderEvents() = default;
    Q_DISABLE_COPY(ReaderEvents)
    virtual ~ReaderEvents() = default;

    /// The readers, or why there is no PC/SC service: at once at the first call, then when something may have changed.
    /// Absent after cancel().
    [[nodiscard]] virtual std::optional<Readers> next() = 0;

    /// Ends next() and all later ones. Called on another thread, and again until next() has returned: a call may come
    /// just before the system can be told to stop waiting.
    virtual void cancel() = 0;
};
