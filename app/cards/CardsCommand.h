#pragma once

#include "app/cards/CardResults.h"
#include "card/CardRecord.h"
#include "platform/Error.h"

#include <QString>
#include <QStringList>

#include <expected>
#include <optional>
#include <utility>

/// What was done with a card: a line for the standard output, if there is one, and the members of its JSON result.
struct CardOutcome
{
    QString line;
    QJsonObject members;
};

/// A run without a window over one card or several: what can be done with a card is done, each failure is a line on the
/// standard error, and none stops the others. Main thread.
class CardsCommand
{
public:
    /// With results, these collect what was done, and nothing is written to the standard output.
    explicit CardsCommand(std::optional<CardResults> results)
        : m_results(std::move(results))
    {
    }
    virtual ~CardsCommand() = default;
    CardsCommand(const CardsCommand&) = delete;
    CardsCommand& operator=(const CardsCommand&) = delete;

    /// Each card file in its turn; "-" is the standard input.
    void takeCardFiles(const QStringList& paths);

    /// The reader's card, or why it was not read.
    void takeCard(const std::expected<CardRecord, Error>& record);

    /// Writes the collected results. 0 when everything was done, otherwise 1.
    [[nodiscard]] int finish();

protected:
    [[nodiscard]] virtual std::expected<CardOutcome, Error> handle(const CardSource& source,
                                                                   const CardRecord& record) = 0;

private:
    void take(const CardSource& source, const std::expected<CardRecord, Error>& record);
    void fail(const QString& reason);

    std::optional<CardResults> m_results;
    bool m_failed = false;
};

/// The same for a command that cannot begin: tells the reason. The result is the exit code.
[[nodiscard]] int failWithoutCards(std::optional<CardResults> results, const Error& error);
