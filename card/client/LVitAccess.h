#pragma once

#include "card/CardRecord.h"
#include "card/client/CardServiceKeys.h"
#include "card/client/ChannelLimits.h"
#include "card/client/LogLimit.h"
#include "card/client/ServiceChannel.h"
#include "card/client/ServiceReply.h"
#include "card/wire/CardReaderState.h"
#include "platform/Error.h"
#include "platform/XmlDocument.h"

#include <QCborMap>
#include <QVariantMap>

#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

/// Client of the card service. Operations may be called on any thread and return at once. Handlers run on the channel's
/// thread, never on the main one, each exactly once, and may call further operations. A client is made with
/// std::make_shared; an operation keeps it alive until its handler has run.
class LVitAccess final : public std::enable_shared_from_this<LVitAccess>
{
public:
    // Arguments of handlers: success, the error of a failure, the result of a success.
    using BindHandler = std::move_only_function<void(bool, std::optional<Error>)>;
    using InformationsHandler = std::move_only_function<void(bool, std::optional<Error>, std::optional<QVariantMap>)>;
    using ReadersHandler = std::move_only_function<void(bool, std::optional<Error>, std::optional<QVariantMap>)>;
    using SetReadersHandler = std::move_only_function<void(bool, std::optional<Error>)>;
    using ReadHandler = std::move_only_function<void(bool, std::optional<Error>, std::optional<CardRecord>)>;

    /// Receives the reader's state; absent while it is unknown. Unlike the others it runs at each change.
    using ReaderStateHandler = std::function<void(std::optional<CardReaderState>)>;

    /// The program that defaultInstance() starts. Set before its first use.
    static void setDefaultCommand(const ServiceCommand& command);

    /// The process-wide client. Its channel is stopped at the end of the process.
    [[nodiscard]] static std::shared_ptr<LVitAccess> defaultInstance();

    explicit LVitAccess(const ServiceCommand& command, ChannelLimits limits = {});

    /// Fresh connection, access mode, reader list, reader choice. (false, nullopt) when no connection can be made. A
    /// running bind ends with (false, replacedBindError()).
    void bindWithCompletionHandler(BindHandler handler);

    /// The reading library's versions under the keys of InformationKey; the last known ones when the service fails.
    void getInformationsWithCompletionHandler(InformationsHandler handler);

    /// The names of the readers: {ReaderKey::readers: names}.
    void getReadersWithCompletionHandler(ReadersHandler handler);

    /// Chooses the readers under ReaderKey::vitale and ReaderKey::cps; the first one is used for both if it is alone.
    void setReadersWithCompletionHandler(std::optional<QVariantMap> readers, SetReadersHandler handler);

    void readeVitaleWithCompletionHandler(ReadHandler handler);

    /// Cancels reads without a reply: the connection is shut down, which ends the service, and they end with the
    /// general error. From this call on initialized() is false, even when no read was waiting.
    void cancelReads();

    /// Calls the handler with the reader's state and with each state that the service tells, in place of the earlier
    /// handler; an empty one is not called. The state is unknown until the service tells it, and without a connection.
    void setReaderStateHandler(ReaderStateHandler handler);

    /// The record of a card's document, without "FundCodeLibelle" and "XMLString". Any thread.
    [[nodiscard]] static std::expected<CardRecord, Error> parseVitaleXML(const XmlDocument* document);

    /// Whether a bind has chosen readers since the connection was last shut down.
    [[nodiscard]] bool initialized() const { return state(&State::initialized); }
    /// Whether the last bind succeeded and its connection is still open: a card can be read without another bind.
    [[nodiscard]] bool bound() const { return state(&State::bound); }
    /// Whether the service reported at the last "init" that it uses its own reading library.
    [[nodiscard]] bool embedded() const { return state(&State::embedded); }
    /// The access mode of the next "init": an index of AccessMode::names.
    [[nodiscard]] unsigned accessMode() const { return state(&State::accessMode); }
    /// A value other than 0, 1 and 2 is stored as 0.
    void setAccessMode(unsigned mode);
    /// The last received information; absent after an "init" until new information is received.
    [[nodiscard]] std::optional<QVariantMap> informations() const;

    /// The number of an access mode; 0 for an unknown name.
    [[nodiscard]] static unsigned _modeToInteger(QStringView name);

private:
    using RequestFields = QMap<QString, std::optional<QString>>;
    /// Receives the result of a step or its error. Unlike a caller's handler it is never empty.
    template <typename Result>
    using StepHandler = std::move_only_function<void(std::expected<Result, Error>)>;

    // Values that several threads use, each under the lock of state() and setState(). They are independent of each
    // other, so one lock for each access is enough. They are copied without implicit sharing.
    struct State
    {
        bool initialized = false;
        bool bound = false;
        bool embedded = false;
        unsigned accessMode = 0;
        std::optional<InformationTexts> informations = InformationTexts();
    };

    // These run on the channel's thread.
    [[nodiscard]] bool _initConnection();
    void _shutdownConnection();
    void forgetBind(); // any thread
    void bind(BindHandler handler);
    void _initializationWithCompletionHandler(StepHandler<void> handler);
    void _setModeWithCompletionHandler(StepHandler<void> handler);
    void _sendSimpleMessageWithCompletionHandler(const RequestFields& fields, StepHandler<QCborMap> handler);

    void handleEvent(const ChannelEvent& event);
    void setReaderState(std::optional<CardReaderState> state);
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

    // Used on the channel's thread only.
    int m_waitingReads = 0;
    quint64 m_lastBind = 0;
    std::optional<CardReaderState> m_readerState;
    ReaderStateHandler m_readerStateHandler;
    LogLimit m_unsolicitedMessages{MXLog::Debug, ChannelLogLines::unsolicitedMessages};

    // Last member: it is destroyed before what its handlers use.
    ServiceChannel m_channel;
};
