#include "service/ServiceCommands.h"

#include "card/wire/ReaderModel.h"
#include "card/wire/ServiceMessage.h"
#include "card/wire/ServiceVocabulary.h"

#include <QCborArray>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

QCborMap success()
{
    return {{ServiceWord::status, ServiceWord::success}};
}

QCborMap failure()
{
    return {{ServiceWord::status, ServiceWord::error}};
}

std::optional<LibraryMode> libraryMode(const QCborValue& mode)
{
    constexpr std::array modes{LibraryMode::Automatic, LibraryMode::System, LibraryMode::Embedded};
    const auto* found = std::ranges::find_if(modes, [&mode](LibraryMode candidate) {
        return mode.isString() && mode.toString() == QString::number(static_cast<int>(candidate));
    });
    return found == modes.end() ? std::nullopt : std::optional(*found);
}

/// Whether a reply with the text fits into one message.
bool fitsMessage(const QString& text)
{
    constexpr qsizetype roomForTheRest = qsizetype{64} * 1024;
    // A UTF-16 unit takes at most three bytes in UTF-8, so most texts need not be converted.
    constexpr qsizetype limit = ServiceMessageReader::maximumItemSize - roomForTheRest;
    return text.size() <= limit / 3 || text.toUtf8().size() <= limit;
}

} // namespace

ServiceCommands::ServiceCommands(std::unique_ptr<ReadingLibrary> library, FundTable funds)
    : m_library(std::move(library))
    , m_funds(std::move(funds))
{
}

std::optional<QCborMap> ServiceCommands::answer(const QCborMap& request)
{
    struct Command
    {
        QLatin1StringView name;
        QCborMap (ServiceCommands::*answer)(const QCborMap& request) = nullptr;
    };
    static constexpr std::array commands{
        Command{ServiceWord::init, &ServiceCommands::initialise},
        Command{ServiceWord::readersList, &ServiceCommands::listReaders},
        Command{ServiceWord::setReaders, &ServiceCommands::chooseReaders},
        Command{ServiceWord::informationsCommand, &ServiceCommands::describeLibrary},
        Command{ServiceWord::vitaleRead, &ServiceCommands::readCard},
    };
    const QString name = request.value(ServiceWord::command).toString();
    const auto* command = std::ranges::find_if(commands, [&name](const Command& known) { return known.name == name; });
    if (command == commands.end())
        return std::nullopt;
    return (this->*command->answer)(request);
}

QCborMap ServiceCommands::initialise(const QCborMap& request)
{
    const std::optional<LibraryMode> mode = libraryMode(request.value(ServiceWord::mode));
    if (!mode)
        return failure();
    const std::optional<LibraryKind> kind = m_library->initialise(*mode);
    m_initialised = kind.has_value();
    m_readersChosen = false;
    m_isWatchDue = m_initialised;
    m_watch.reset();
    if (!kind)
        return failure();
    QCborMap reply = success();
    reply.insert(ServiceWord::embedded, *kind == LibraryKind::Embedded ? ServiceWord::embeddedTrue : "false"_L1);
    return reply;
}

QCborMap ServiceCommands::listReaders(const QCborMap&)
{
    const QStringList readers = m_library->readers();
    QCborMap reply = success();
    reply.insert(ServiceWord::readers, QCborArray::fromStringList(readers));
    if (const QString hint = m_library->hint(); readers.isEmpty() && !hint.isEmpty())
        reply.insert(ServiceWord::detail, hint);
    return reply;
}

QCborMap ServiceCommands::chooseReaders(const QCborMap& request)
{
    const QCborValue vitaleReader = request.value(ServiceWord::vitaleReaderName);
    const QCborValue professionalReader = request.value(ServiceWord::cpsReaderName);
    if (!vitaleReader.isString() || !professionalReader.isString())
        return failure();
    if (!m_library->chooseReaders(vitaleReader.toString(), professionalReader.toString()))
        return failure();
    m_readersChosen = true;
    return success();
}

QCborMap ServiceCommands::describeLibrary(const QCborMap&)
{
    const QString informations = m_library->informations();
    if (m_library->isBeyondUse())
        return failure();
    QCborMap reply = success();
    reply.insert(ServiceWord::informations, informations);
    return reply;
}

QCborMap ServiceCommands::readCard(const QCborMap&)
{
    if (!m_initialised)
        return failure();
    // The reader may have been connected after the choice failed.
    if (!m_readersChosen && !chooseAcceptedReader())
        return readFailure(ReadResult::ReaderFault, u"Aucun lecteur « %1 » n’est branché."_s.arg(acceptedReader));
    const std::expected<QString, ReadResult> card = m_library->readCard();
    if (!card)
        return readFailure(card.error());
    if (!fitsMessage(*card))
        return readFailure(ReadResult::ReadError);
    QCborMap reply = success();
    reply.insert(ServiceWord::vitale, *card);
    const std::optional<CardCoverage> coverage = cardCoverage(*card);
    if (const std::optional<QString> label = coverage ? m_funds.label(*coverage) : std::nullopt)
        reply.insert(ServiceWord::fundCodeLibelle, *label);
    return reply;
}

void ServiceCommands::watchReader(const ReaderReport& report)
{
    if (std::exchange(m_isWatchDue, false))
        m_watch = m_library->watchReader(report);
}

bool ServiceCommands::chooseAcceptedReader()
{
    const QStringList readers = m_library->readers();
    const auto isAccepted = [](const QString& name) { return name == acceptedReader; };
    const auto vitale = std::ranges::find_if(readers, isAccepted);
    if (vitale == readers.end())
        return false;
    const auto other = std::ranges::find_if_not(readers, isAccepted);
    m_readersChosen = m_library->chooseReaders(*vitale, other == readers.end() ? *vitale : *other);
    return m_readersChosen;
}

QCborMap ServiceCommands::readFailure(ReadResult result, const QString& otherwise) const
{
    QCborMap reply{{ServiceWord::status, ServiceWord::error}, {ServiceWord::result, static_cast<qint64>(result)}};
    const QString hint = m_library->hint();
    if (const QString& detail = hint.isEmpty() ? otherwise : hint; !detail.isEmpty())
        reply.insert(ServiceWord::detail, detail);
    return reply;
}
