#include "card/client/LVitAccess.h"

#include "card/CardParser.h"
#include "card/PelmoraError.h"
#include "card/client/BindOutcome.h"
#include "card/client/MessageDescription.h"
#include "card/client/ReaderChoice.h"
#include "card/client/ServiceReply.h"
#include "card/wire/ServiceVocabulary.h"
#include "support/MXLog.h"

#include <algorithm>
#include <exception>
#include <string_view>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Calls the handler, if there is one.
template <typename Handler, typename... Values>
void complete(Handler& handler, Values&&... values)
{
    if (handler)
        handler(std::forward<Values>(values)...);
}

bool logsDebug()
{
    return MXLog::defaultLogger().logLevel() >= MXLog::Debug;
}

/// The log line of whatever comes from the service. The handler's name is the one that the log has always had.
void logReceived(std::string_view handlerName, const std::optional<QCborMap>& message)
{
    if (logsDebug())
        MXLog::logDebug("Received response in {} event handler: {}\n{}", handlerName, fmt::ptr(&message),
                        message ? describeMessage(*message) : u"no dictionary"_s);
}

/// The text of a dictionary under a key; nullopt when there is none.
std::optional<QString> textValue(const QVariantMap& dictionary, QStringView key)
{
    const QVariant value = dictionary.value(key.toString());
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    return value.toString();
}

std::mutex& defaultCommandMutex()
{
    static std::mutex mutex;
    return mutex;
}

ServiceCommand& defaultCommand()
{
    static ServiceCommand command;
    return command;
}

} // namespace

void LVitAccess::setDefaultCommand(const ServiceCommand& command)
{
    const std::scoped_lock lock(defaultCommandMutex());
    defaultCommand() = command;
}

std::shared_ptr<LVitAccess> LVitAccess::defaultInstance()
{
    // Its channel is stopped with the process, whoever still holds the client: handlers must not run while the statics
    // that they use are destroyed. The logger, one of these, is made first to go last.
    struct DefaultClient
    {
        DefaultClient()
        {
            [[maybe_unused]] const MXLog& logger = MXLog::defaultLogger();
            const std::scoped_lock lock(defaultCommandMutex());
            client = std::make_shared<LVitAccess>(defaultCommand());
        }
        DefaultClient(const DefaultClient&) = delete;
        DefaultClient& operator=(const DefaultClient&) = delete;
        ~DefaultClient() { client->m_channel.stop(); }

        std::shared_ptr<LVitAccess> client;
    };
    static const DefaultClient holder;
    return holder.client;
}

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
    // The end of the connection ends the bind that is under way, whose number is not the last one any more.
    _shutdownConnection();
    if (!_initConnection()) {
        complete(handler, false, std::nullopt);
        return;
    }
    _initializationWithCompletionHandler([self = shared_from_this(), number, handler = std::move(handler)](
                                             bool bound, const std::optional<Error>& error) mutable {
        if (number != self->m_lastBind) {
            complete(handler, false, replacedBindError());
            return;
        }
        self->setState(&State::bound, bound);
        complete(handler, bound, error);
    });
}

void LVitAccess::getInformationsWithCompletionHandler(InformationsHandler handler)
{
    m_channel.post([self = shared_from_this(), handler = std::move(handler)]() mutable {
        self->getInformations(std::move(handler));
    });
}

void LVitAccess::getReadersWithCompletionHandler(ReadersHandler handler)
{
    m_channel.post(
        [self = shared_from_this(), handler = std::move(handler)]() mutable { self->getReaders(std::move(handler)); });
}

void LVitAccess::setReadersWithCompletionHandler(std::optional<QVariantMap> readers, SetReadersHandler handler)
{
    m_channel.post([self = shared_from_this(), readers = std::move(readers), handler = std::move(handler)]() mutable {
        self->setReaders(readers, std::move(handler));
    });
}

void LVitAccess::readeVitaleWithCompletionHandler(ReadHandler handler)
{
    m_channel.post(
        [self = shared_from_this(), handler = std::move(handler)]() mutable { self->readVitale(std::move(handler)); });
}

void LVitAccess::cancelReads()
{
    // At once, so that a read that is asked for next binds first.
    forgetBind();
    m_channel.post([self = shared_from_this()] {
        // A connection on which no read waits is another matter's by now: a bind has ended the reads already.
        if (self->m_waitingReads > 0)
            self->_shutdownConnection();
    });
}

std::expected<CardRecord, Error> LVitAccess::parseVitaleXML(const XmlDocument* document)
{
    return parseCardDocument(document);
}

bool LVitAccess::initialized() const
{
    return state(&State::initialized);
}

bool LVitAccess::embedded() const
{
    return state(&State::embedded);
}

bool LVitAccess::bound() const
{
    return state(&State::bound);
}

unsigned LVitAccess::accessMode() const
{
    return state(&State::accessMode);
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
        break;
    }
}

void LVitAccess::_shutdownConnection()
{
    m_channel.close();
    forgetBind();
    m_unsolicitedMessages.tellLeftOut();
}

void LVitAccess::forgetBind()
{
    setState(&State::initialized, false);
    setState(&State::bound, false);
}

void LVitAccess::_sendSimpleMessageWithCompletionHandler(const RequestFields& fields, ReplyHandler handler)
{
    if (!_initConnection()) {
        complete(handler, false, PelmoraError::generalError(), std::nullopt);
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
        MXLog::logDebug("Message:\n{}", describeMessage(request));

    // The client is held until the reply is there.
    m_channel.send(request,
                   [self = shared_from_this(), handler = std::move(handler)](std::optional<QCborMap> reply) mutable {
                       logReceived("_sendSimpleMessage:withCompletionHandler:", reply);
                       if (reply)
                           complete(handler, true, std::nullopt, std::move(reply));
                       else
                           complete(handler, false, PelmoraError::generalError(), std::nullopt);
                   });
}

void LVitAccess::_initializationWithCompletionHandler(BindHandler handler)
{
    _setModeWithCompletionHandler([self = shared_from_this(), handler = std::move(handler)](
                                      bool modeIsSet, const std::optional<Error>& modeError) mutable {
        if (!modeIsSet) {
            complete(handler, false, modeError);
            return;
        }
        self->getReaders([self, handler = std::move(handler)](bool isKnown, const std::optional<Error>& error,
                                                              const std::optional<QVariantMap>& readers) mutable {
            if (isKnown && readers)
                self->chooseReaders(*readers, std::move(handler));
            else
                complete(handler, false, error);
        });
    });
}

void LVitAccess::_setModeWithCompletionHandler(BindHandler handler)
{
    setState(&State::informations, std::optional<InformationTexts>());
    const RequestFields fields{{ServiceWord::command, ServiceWord::init},
                               {ServiceWord::mode, QString::number(accessMode())}};
    _sendSimpleMessageWithCompletionHandler(
        fields, [self = shared_from_this(), handler = std::move(handler)](
                    bool isSent, const std::optional<Error>& error, const std::optional<QCborMap>& reply) mutable {
            if (!isSent || !reply) {
                complete(handler, false, error);
                return;
            }
            self->setState(&State::embedded, replyText(*reply, ServiceWord::embedded) == ServiceWord::embeddedTrue);
            if (isSuccess(*reply))
                complete(handler, true, std::nullopt);
            else
                complete(handler, false, PelmoraError::generalError());
        });
}

void LVitAccess::getReaders(ReadersHandler handler)
{
    _sendSimpleMessageWithCompletionHandler(
        {{ServiceWord::command, ServiceWord::readersList}},
        [handler = std::move(handler)](bool isSent, const std::optional<Error>& error,
                                       const std::optional<QCborMap>& reply) mutable {
            if (!isSent || !reply) {
                complete(handler, false, error, std::nullopt);
                return;
            }
            if (!isSuccess(*reply)) {
                complete(handler, false, PelmoraError::generalError(), std::nullopt);
                return;
            }
            if (std::optional<QVariantMap> readers = readersOf(*reply))
                complete(handler, true, std::nullopt, std::move(readers));
            else
                complete(handler, false, PelmoraError::noReader(), std::nullopt);
        });
}

void LVitAccess::chooseReaders(const QVariantMap& readers, BindHandler handler)
{
    const QStringList names = readers.value(ReaderKey::readers.toString()).toStringList();
    if (!names.isEmpty())
        MXLog::logDebug("Readers: {}", printableTexts(names));
    const std::expected<QVariantMap, Error> choice = readerChoice(names);
    if (!choice) {
        complete(handler, false, choice.error().withDetail(textValue(readers, ReaderKey::detail).value_or(QString())));
        return;
    }
    setReaders(*choice, [self = shared_from_this(),
                         handler = std::move(handler)](bool isSet, const std::optional<Error>& error) mutable {
        // A bind that came as far as this counts as done, whatever the service made of the choice. The end of the
        // connection is another matter: it is told here too, after it has undone what a bind does.
        if (self->m_channel.isOpen())
            self->setState(&State::initialized, true);
        complete(handler, isSet, error);
    });
}

void LVitAccess::setReaders(const std::optional<QVariantMap>& readers, SetReadersHandler handler)
{
    const std::optional<QString> vitale = readers ? textValue(*readers, ReaderKey::vitale) : std::nullopt;
    const std::optional<QString> cps = readers ? textValue(*readers, ReaderKey::cps) : std::nullopt;
    if (!vitale && !cps) {
        complete(handler, false, PelmoraError::internalError());
        return;
    }
    const RequestFields fields{{ServiceWord::command, ServiceWord::setReaders},
                               {ServiceWord::vitaleReaderName, vitale},
                               {ServiceWord::cpsReaderName, cps ? cps : vitale}};
    _sendSimpleMessageWithCompletionHandler(
        fields, [handler = std::move(handler)](bool isSent, const std::optional<Error>& error,
                                               const std::optional<QCborMap>& reply) mutable {
            if (!isSent || !reply)
                complete(handler, false, error);
            else if (isSuccess(*reply))
                complete(handler, true, std::nullopt);
            else
                complete(handler, false, PelmoraError::generalError());
        });
}

void LVitAccess::getInformations(InformationsHandler handler)
{
    _sendSimpleMessageWithCompletionHandler(
        {{ServiceWord::command, ServiceWord::informationsCommand}},
        [self = shared_from_this(), handler = std::move(handler)](bool isSent, const std::optional<Error>& error,
                                                                  const std::optional<QCborMap>& reply) mutable {
            if (isSent && reply)
                self->completeInformations(*reply, handler);
            else
                complete(handler, false, error, std::nullopt);
        });
}

void LVitAccess::completeInformations(const QCborMap& reply, InformationsHandler& handler)
{
    const std::optional<QString> text = replyText(reply, ServiceWord::informations);
    if (!isSuccess(reply) || !text) {
        complete(handler, false, PelmoraError::generalError(), informations());
        return;
    }
    const auto document = XmlDocument::fromText(*text);
    if (!document) {
        complete(handler, false, document.error(), informations());
        return;
    }
    InformationTexts found;
    std::optional<Error> error;
    try {
        found = informationsOf(*document);
    } catch (const std::exception& exception) {
        MXLog::logError("Information document: {}", exception.what());
        error = PelmoraError::generalError();
    }
    setState(&State::informations, std::optional(found));
    complete(handler, !error, error, informationsDictionary(found));
}

void LVitAccess::readVitale(ReadHandler handler)
{
    ++m_waitingReads;
    _sendSimpleMessageWithCompletionHandler(
        {{ServiceWord::command, ServiceWord::vitaleRead}},
        [self = shared_from_this(), handler = std::move(handler)](bool isSent, const std::optional<Error>& error,
                                                                  const std::optional<QCborMap>& reply) mutable {
            --self->m_waitingReads;
            if (!isSent || !reply) {
                complete(handler, false, error, std::nullopt);
                return;
            }
            if (!isSuccess(*reply)) {
                const qint64 result = reply->value(ServiceWord::result).toInteger();
                complete(handler, false, PelmoraError::errorForCode(result).withDetail(replyDetail(*reply)),
                         std::nullopt);
                return;
            }
            std::expected<CardRecord, Error> record = std::unexpected(PelmoraError::generalError());
            try {
                record = recordOf(*reply);
            } catch (const std::exception& exception) {
                MXLog::logError("Card document: {}", exception.what());
            }
            if (record)
                complete(handler, true, std::nullopt, std::move(*record));
            else
                complete(handler, false, record.error(), std::nullopt);
        });
}
