#include "app/cards/CardsCommand.h"

#include "app/cards/Console.h"
#include "app/models/CardFile.h"
#include "app/models/CommandLine.h"

#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView outputFailed = u"la sortie standard ne peut pas être écrite.";

} // namespace

void CardsCommand::takeCardFiles(const QStringList& paths)
{
    for (const QString& path : paths) {
        if (path == CommandLine::standardInputName)
            take({CardSource::Kind::StandardInput, {}}, loadCardFromStandardInput());
        else
            take({CardSource::Kind::File, path}, loadCardFile(path));
    }
}

void CardsCommand::takeCard(const std::expected<CardRecord, Error>& record)
{
    take({CardSource::Kind::Reader, {}}, record);
}

void CardsCommand::take(const CardSource& source, const std::expected<CardRecord, Error>& record)
{
    std::expected<CardOutcome, Error> outcome;
    if (record)
        outcome = handle(source, *record);
    else
        outcome = std::unexpected(record.error());
    if (m_results)
        m_results->add(source, outcome ? std::expected<QJsonObject, Error>(outcome->members)
                                       : std::unexpected(outcome.error()));
    if (!record)
        fail(source.prefix() + record.error().localizedDescriptionWithDetail());
    else if (!outcome)
        fail(outcome.error().localizedDescription());
    else if (!m_results && !outcome->line.isEmpty() && !Console::print(outcome->line + u'\n'))
        fail(outputFailed.toString());
}

int CardsCommand::finish()
{
    if (m_results && !Console::print(QString::fromUtf8(m_results->document())))
        fail(outputFailed.toString());
    return m_failed ? EXIT_FAILURE : EXIT_SUCCESS;
}

void CardsCommand::fail(const QString& reason)
{
    m_failed = true;
    Console::complain(reason);
}

int failWithoutCards(std::optional<CardResults> results, const Error& error)
{
    Console::complain(error.localizedDescription());
    if (results) {
        results->setFailure(error);
        if (!Console::print(QString::fromUtf8(results->document())))
            Console::complain(outputFailed.toString());
    }
    return EXIT_FAILURE;
}
