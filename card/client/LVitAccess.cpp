#include "card/client/LVitAccess.h"

#include "card/CardParser.h"
#include "card/PelmoraError.h"
#include "card/client/BindOutcome.h"
#include "card/client/MessageLogText.h"
#include "card/client/ReaderChoice.h"
#include "card/wire/ServiceVocabulary.h"
#include "support/MXLog.h"

#include <algorithm>
#include <exception>
#include <string_view>
#include <type_traits>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using Reply = std::expected<QCborMap, Error>;

/// The function's result for the reply, or the reply's error.
template <typename Function>
std::invoke_result_t<Function, const QCborMap&> readReply(const Reply& reply, Function function)
{
    if (!reply)
        return std::unexpected(reply.error());
    return function(*reply);
}

template <typename Result>
std::optional<Error> errorOf(const std::expected<Result, Error>& outcome)
{
    return outcome ? std::nullopt : std::optional(outcome.error());
}

/// The last step of an operation: calls the caller's handler, if there is one.
template <typename Result, typename Handler>
auto lastStep(Handler handler)
{
    return [handler = std::move(handler)](std::expected<Result, Error> outcome) mutable {
        if (!handler)
            return;
        if constexpr (std::is_void_v<Result>)
            handler(outcome.has_value(), errorOf(outcome));
        else
            handler(outcome.has_value(), errorOf(outcome), outcome ? std::optional(std::move(*outcome)) : std::nullopt);
    };
}

bool logsDebug()
{
    return MXLog::defaultLogger().logLevel() >= MXLog::Debug;
}

/// Logs a message of the service. The handler names are those of the original log.
void logReceived(std::string_view handlerName, const std::optional<QCborMap>& message)
{
    if (logsDebug())
        MXLog::logDebug("Received response in {} event handler: {}\n{}", handlerName, fmt::ptr(&message),
                        message ? messageLogText(*message) : u"no dictionary"_s);
}

/// The text under a key of a dictionary.
std::optional<QString> textValue(const QVariantMap& dictionary, QStringView key)
{
    const QVariant value = dictionary.value(key.toString());
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    return value.toString();
}

} // namespace

LVitAccess::LVitAccess(const ServiceCommand& command, ChannelLimits limits)
    : m_channel(command, limits)
{
}

void LVitAccess::bindWithCompletionHandler(BindHandler handler)
{
    m_channel.post(
        [self = shared_from_this(), handler = std::move(handler)]() mutable { self->bind(std::move(handler)); });
}

void LVitAccess::bind(BindHandler handler)
{
    const quint64 number = ++m_lastBind;
    // Shutting down ends a running bind, whose number is no longer the last one.
    _shutdownConnection();
    if (!_initConnection()) {
        if (handler)
            handler(false, std::nullopt);
        return;
    }
    _initializationWithCompletionHandler(
        [self = shared_from_this(), number,
         finish = lastStep<void>(std::move(handler))](std::expected<void, Error> outcome) mutable {
            if (number == self->m_lastBind)
                self->setState(&State::bound, outcome.has_value());
            else
                outcome = std::unexpected(replacedBindError());
            finish(std::move(outcome));
        });
}

void LVitAccess::getInformationsWithCompletionHandler(InformationsHandler handler)
{
    m_channel.post([self = shared_from_this(), handler = std::move(handler)]() mutable {
        self->_sendSimpleMessageWithCompletionHandler(
            {{ServiceWord::command, ServiceWord::informationsCommand}},
            [self, handler = std::move(handler)](const Reply& reply) mutable {
                const std::expected<void, Error> kept =
                    readReply(reply, [&self](const QCborMap& map) { return self->keepInformations(map); });
                // A failure that the service reports still gives the last information; a missing reply gives none.
                if (handler)
                    handler(kept.has_value(), errorOf(kept), reply ? self->informations() : std::nullopt);
            });
    });
}

void LVitAccess::getReadersWithCompletionHandler(ReadersHandler handler)
{
    m_channel.post([self = shared_from_this(), handler = std::move(handler)]() mutable {
        self->getReaders(lastStep<QVariantMap>(std::move(handler)));
    });
}

void LVitAccess::setReadersWithCompletionHandler(std::optional<QVariantMap> readers, SetReadersHandler handler)
{
    m_channel.post([self = shared_from_this(), readers = std::move(readers), handler = std::move(handler)]() mutable {
        self->setReaders(readers, lastStep<void>(std::move(handler)));
    });
}

void LVitAccess::readeVitaleWithCompletionHandler(ReadHandler handler)
{
    m_channel.post([self = shared_from_this(), handler = std::move(handler)]() mutable {
        self->readVitale(lastStep<CardRecord>(std::move(handler)));
    });
}

void LVitAccess::cancelReads()
{
    // At once, so that the next read binds first.
    forgetBind();
    m_channel.post([self = shared_from_this()] {
        // Without waiting reads this is a new connection: a bind has ended them already.
        if (self->m_waitingReads > 0)
            self->_shutdownConnection();
    });
}

void LVitAccess::setReaderStateHandler(ReaderStateHandler handler)
{
    m_channel.post([self = shared_from_this(), handler = std::move(handler)]() mutable {
        self->m_readerStateHandler = std::move(handler);
        if (self->m_readerStateHandler)
            self->m_readerStateHandler(self->m_readerState);
    });
}

std::expected<CardRecord, Error> LVitAccess::parseVitaleXML(const XmlDocument* document)
{
    return parseCardDocument(document);
}

void LVitAccess::setAccessMode(unsigned mode)
{
    setState(&State::accessMode, mode < AccessMode::names.size() ? mode : 0U);
}

std::optional<QVariantMap> LVitAccess::informations() const
{
    const std::optional<InformationTexts> texts = state(&State::informations);
    if (!texts)
        return std::nullopt;
    return informationsDictionary(*texts);
}

unsigned LVitAccess::_modeToInteger(QStringView name)
{
    const auto* const found = std::ranges::find(AccessMode::names, name);
    return found == AccessMode::names.end() ? 0U : static_cast<unsigned>(found - AccessMode::names.begin());
}

bool LVitAccess::_initConnection()
{
    return m_channel
        .open([client = weak_from_this()](const ChannelEvent& event) {
            if (const std::shared_ptr<LVitAccess> self = client.lock())
                self->handleEvent(event);
        })
        .has_value();
}

void LVitAccess::handleEvent(const ChannelEvent& event)
{
    switch (event.kind) {
    case ChannelEvent::Kind::Interrupted:
        MXLog::logDebug("Received XPC_ERROR_CONNECTION_INTERRUPTED");
        _shutdownConnection();
        break;
    case ChannelEvent::Kind::UnsolicitedMessage:
        if (logsDebug() && m_unsolicitedMessages.admits())
            logReceived("_initConnection", event.message);
        if (const std::optional<CardReaderState> state = readerStateOf(event.message))
            setReaderState(state);
        break;
    }
}

void LVitAccess::_shutdownConnection()
{
    m_channel.close();
    forgetBind();
    setReaderState(std::nullopt);
    m_unsolicitedMessages.tellLeftOut();
}

void LVitAccess::setReaderState(std::optional<CardReaderState> state)
{
    if (m_readerState == state)
        return;
    m_readerState = state;
    if (m_readerStateHandler)
        m_readerStateHandler(state);
}

void LVitAccess::forgetBind()
{
    setState(&State::initialized, false);
    setState(&State::bound, false);
}

void LVitAccess::_sendSimpleMessageWithCompletionHandler(const RequestFields& fields, StepHandler<QCborMap> handler)
{
    if (!_initConnection()) {
        handler(std::unexpected(PelmoraError::generalError()));
        return;
    }
    QCborMap request;
    for (const auto& [key, value] : fields.asKeyValueRange()) {
        if (value)
            request.insert(key, *value);
        else
            MXLog::logError("NULL value in message");
    }
    if (logsDebug())
        MXLog::logDebug("Message:\n{}", messageLogText(request));

    // Keeps the client alive until the reply.
    m_channel.send(request,
                   [self = shared_from_this(), handler = std::move(handler)](std::optional<QCborMap> reply) mutable {
                       logReceived("_sendSimpleMessage:withCompletionHandler:", reply);
                       if (reply)
                           handler(std::move(*reply));
                       else
                           handler(std::unexpected(PelmoraError::generalError()));
                   });
}

void LVitAccess::_initializationWithCompletionHandler(StepHandler<void> handler)
{
    _setModeWithCompletionHandler(
        [self = shared_from_this(), handler = std::move(handler)](const std::expected<void, Error>& mode) mutable {
            if (!mode) {
                handler(mode);
                return;
            }
            self->getReaders(
                [self, handler = std::move(handler)](const std::expected<QVariantMap, Error>& readers) mutable {
                    if (readers)
                        self->chooseReaders(*readers, std::move(handler));
                    else
                        handler(std::unexpected(readers.error()));
                });
        });
}

void LVitAccess::_setModeWithCompletionHandler(StepHandler<void> handler)
{
    setState(&State::informations, std::optional<InformationTexts>());
    const RequestFields fields{{ServiceWord::command, ServiceWord::init},
                               {ServiceWord::mode, QString::number(accessMode())}};
    _sendSimpleMessageWithCompletionHandler(
        fields, [self = shared_from_this(), handler = std::move(handler)](const Reply& reply) mutable {
            if (reply)
                self->setState(&State::embedded, replyText(*reply, ServiceWord::embedded) == ServiceWord::embeddedTrue);
            handler(readReply(reply, statusOf));
        });
}

void LVitAccess::getReaders(StepHandler<QVariantMap> handler)
{
    _sendSimpleMessageWithCompletionHandler(
        {{ServiceWord::command, ServiceWord::readersList}},
        [handler = std::move(handler)](const Reply& reply) mutable { handler(readReply(reply, readersOf)); });
}

void LVitAccess::chooseReaders(const QVariantMap& readers, StepHandler<void> handler)
{
    const QStringList names = readers.value(ReaderKey::readers.toString()).toStringList();
    if (!names.isEmpty())
        MXLog::logDebug("Readers: {}", printableTexts(names));
    const std::expected<QVariantMap, Error> choice = readerChoice(names);
    if (!choice) {
        const QString detail = textValue(readers, ReaderKey::detail).value_or(QString());
        handler(std::unexpected(choice.error().withDetail(detail)));
        return;
    }
    setReaders(*choice, [self = shared_from_this(),
                         handler = std::move(handler)](const std::expected<void, Error>& outcome) mutable {
        // The bind counts as done even if the service refused the choice. When the connection has ended, this handler
        // runs too, and the client must stay uninitialized.
        if (self->m_channel.isOpen())
            self->setState(&State::initialized, true);
        handler(outcome);
    });
}

void LVitAccess::setReaders(const std::optional<QVariantMap>& readers, StepHandler<void> handler)
{
    const std::optional<QString> vitale = readers ? textValue(*readers, ReaderKey::vitale) : std::nullopt;
    const std::optional<QString> cps = readers ? textValue(*readers, ReaderKey::cps) : std::nullopt;
    if (!vitale && !cps) {
        handler(std::unexpected(PelmoraError::internalError()));
        return;
    }
    const RequestFields fields{{ServiceWord::command, ServiceWord::setReaders},
                               {ServiceWord::vitaleReaderName, vitale},
                               {ServiceWord::cpsReaderName, cps ? cps : vitale}};
    _sendSimpleMessageWithCompletionHandler(
        fields, [handler = std::move(handler)](const Reply& reply) mutable { handler(readReply(reply, statusOf)); });
}

std::expected<void, Error> LVitAccess::keepInformations(const QCborMap& reply)
{
    const std::expected<XmlDocument, Error> document = informationDocument(reply);
    if (!document)
        return std::unexpected(document.error());
    InformationTexts found;
    std::expected<void, Error> outcome;
    try {
        found = informationsOf(*document);
    } catch (const std::exception& exception) {
        MXLog::logError("Information document: {}", exception.what());
        outcome = std::unexpected(PelmoraError::generalError());
    }
    setState(&State::informations, std::optional(found));
    return outcome;
}

void LVitAccess::readVitale(StepHandler<CardRecord> handler)
{
    ++m_waitingReads;
    _sendSimpleMessageWithCompletionHandler(
        {{ServiceWord::command, ServiceWord::vitaleRead}},
        [self = shared_from_this(), handler = std::move(handler)](const Reply& reply) mutable {
            --self->m_waitingReads;
            std::expected<CardRecord, Error> record = std::unexpected(PelmoraError::generalError());
            try {
                record = readReply(reply, recordOf);
            } catch (const std::exception& exception) {
                MXLog::logError("Card document: {}", exception.what());
            }
            handler(std::move(record));
        });
}
