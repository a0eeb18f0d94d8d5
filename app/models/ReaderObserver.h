#pragma once

#include "card/wire/CardReaderState.h"

#include <functional>
#include <memory>
#include <optional>

class LVitAccess;

/// What has happened to the card reader since the last report.
struct ReaderChange
{
    std::optional<CardReaderState> state; // absent while it is unknown
    bool hasCardCome = false;             // the card was inserted while the reader was watched
    bool hasCardLeft = false;             // a card was removed, or its reader unplugged

    friend bool operator==(const ReaderChange&, const ReaderChange&) = default;
};

/// Reports the reader's state and its changes on the main thread. Changes that come faster than they can be reported
/// are reported together. Made and destroyed on the main thread; there is one for a client.
class ReaderObserver final
{
public:
    using Report = std::function<void(const ReaderChange&)>;

    ReaderObserver(std::shared_ptr<LVitAccess> client, Report report);
    ReaderObserver(const ReaderObserver&) = delete;
    ReaderObserver& operator=(const ReaderObserver&) = delete;
    /// Nothing is reported afterwards.
    ~ReaderObserver();

private:
    class Changes;

    std::shared_ptr<LVitAccess> m_client;
    std::shared_ptr<const Report> m_report; // a late report finds that it is gone
};
