#pragma once

#include "card/CardRecord.h"
#include "card/client/CardServiceKeys.h"
#include "card/client/ChannelLimits.h"
#include "card/client/LogLimit.h"
#include "card/client/ServiceChannel.h"
#include "card/client/ServiceReply.h"
#include "platform/Error.h"
#include "platform/XmlDocument.h"

#include <QCborMap>
#include <QMap>
#include <QVariantMap>

#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

/// Client of the card service. Every operation may be called on any thread and returns at once. Handlers run on the
/// channel's thread, never on the main one, each exactly once, and may call further operations. A client is made with
/// std::make_shared; an operation keeps it alive until its handler has run.
class LVitAccess final : public std::enable_shared_from_this<LVitAccess>
{
public:
    // What handlers receive: whether it went well; the error when it did not; and the result, where there is one.
    using BindHandler = std::move_only_function<void(bool, std::optional<Error>)>;
    using InformationsHandler = std::move_only_function<void(bool, std::optional<Error>, std::optional<QVariantMap>)>;
    using ReadersHandler = std::move_only_function<void(bool, std::optional<Error>, std::optional<QVariantMap>)>;
    using SetReadersHandler = std::move_only_function<void(bool, std::optional<Error>)>;
    using ReadHandler = std::move_only_function<void(bool, std::optional<Error>, std::optional<CardRecord>)>;

    /// The program that defaultInstance() starts; set once, before its first use.
    static void setDefaultCommand(const ServiceCommand& command);

    /// The process-wide client, made at first use. At the end of the process its channel is stopped.
    [[nodiscard]] static std::shared_ptr<LVitAccess> defaultInstance();

    explicit LVitAccess(const ServiceCommand& command, ChannelLimits limits = {});

    /// Fresh connection, access mode, reader list, reader choice. (false, nullopt) when no connection can be made. A
    /// bind that is under way is given up: it ends with (false, replacedBindError()).
    void bindWithCompletionHandler(BindHandler handler);

    /// The reading library's versions: texts under the keys of InformationKey. On a failure of the service, the last
    /// ones.
    void getInformationsWithCompletionHandler(InformationsHandler handler);

    /// The readers that the service sees: {ReaderKey::readers: names}.
    void getReadersWithCompletionHandler(ReadersHandler handler);

    /// Chooses the readers by the names under ReaderKey::vitale and ReaderKey::cps (by default the former's).
    void setReadersWithCompletionHandler(std::optional<QVariantMap> readers, SetReadersHandler handler);

    /// Reads the card in the reader.
    void readeVitaleWithCompletionHandler(ReadHandler handler);

    /// Gives up the reads that wait for their reply: the connection is shut down, which ends the service, and they end
    /// with the general error. Not initialized from this call on, even when no read waits any more.
    void cancelReads();

    /// The record of a card's document, without "FundCodeLibelle" and "XMLString". Any thread.
    [[nodiscard]] static std::expected<CardRecord, Error> parseVitaleXML(const XmlDocument* document);

    /// Whether a bind has come as far as the choice of readers since the connection was last shut down.
    [[nodiscard]] bool initialized() const { return state(&State::initialized); }
    /// Whether the last bind went well and its connection still stands: a card can be read without another bind.
    [[nodiscard]] bool bound() const { return state(&State::bound); }
    /// Whether the service said at the last "init" that it uses its own reading library.
    [[nodiscard]] bool embedded() const { return state(&State::embedded); }
    /// Which reading library the next "init" asks for: an index of AccessMode::names.
    [[nodiscard]] unsigned accessMode() const { return state(&State::accessMode); }
    /// A value other than 0, 1 and 2 is stored as 0.
    void setAccessMode(unsigned mode);
    /// The last information obtained; absent from an "init" on until the next one is obtained.
    [[nodiscard]] std::optional<QVariantMap> informations() const;

    /// The number of an access mode's name; 0 for an unknown one.
    [[nodiscard]] static unsigned _modeToInteger(QStringView name);

private:
    using RequestFields = QMap<QString, std::optional<QString>>;
    /// What a step hands on: its result, or why there is none. Unlike a caller's handler it is never empty.
    template <typename Result>
    using StepHandler = std::move_only_function<void(std::expected<Result, Error>)>;

    // What other threads read and write. Everything is reached through the functions above and setState(), one lock
    // each: the values are independent, and nobody needs two of them at one moment. They are plain values: what a
    // thread gets shares nothing with what another has.
    struct State
    {
        bool initialized = false;
        bool bound = false;
        bool embedded = false;
        unsigned accessMode = 0;
        std::optional<InformationTexts> informations = InformationTexts();
    };

    // All of these run on the channel's thread.
    [[nodiscard]] bool _initConnection();
    void _shutdownConnection();
    void forgetBind(); // any thread
    void bind(BindHandler handler);
    void _initializationWithCompletionHandler(StepHandler<void> handler);
    void _setModeWithCompletionHandler(StepHandler<void> handler);
    void _sendSimpleMessageWithCompletionHandler(const RequestFields& fields, StepHandler<QCborMap> handler);

    void handleEvent(const ChannelEvent& event);
    void getReaders(StepHandler<QVariantMap> handler);
    void chooseReaders(const QVariantMap& readers, StepHandler<void> handler);
    void setReaders(const std::optional<QVariantMap>& readers, StepHandler<void> handler);
    [[nodiscard]] std::expected<void, Error> keepInformations(const QCborMap& reply);
    void readVitale(StepHandler<CardRecord> handler);

    template <typename Value>
    void setState(Value State::* member, Value value)
    {
        const std::scoped_lock lock(m_stateMutex);
        m_state.*member = std::move(value);
    }
    template <typename Value>
    [[nodiscard]] Value state(Value State::* member) const
    {
        const std::scoped_lock lock(m_stateMutex);
        return m_state.*member;
    }

    mutable std::mutex m_stateMutex;
    State m_state;

    // On the channel's thread alone.
    int m_waitingReads = 0;
    quint64 m_lastBind = 0;
    LogLimit m_unsolicitedMessages{MXLog::Debug, ChannelLogLines::unsolicitedMessages};

    // Last, so that it ends before what its handlers use.
    ServiceChannel m_channel;
};
