#pragma once

#include "card/CardRecord.h"
#include "platform/Error.h"

#include <QString>
#include <QStringList>

#include <expected>

/// A run without a window over one card or several: what can be done with a card is done, each failure is a line on the
/// standard error, and none stops the others. Main thread.
class CardsCommand
{
public:
    CardsCommand() = default;
    virtual ~CardsCommand() = default;
    CardsCommand(const CardsCommand&) = delete;
    CardsCommand& operator=(const CardsCommand&) = delete;

    /// Each card file in its turn.
    void takeCardFiles(const QStringList& paths);

    /// The card that was read, or why it was not.
    void takeCard(const std::expected<CardRecord, Error>& record);

    /// 0 when everything was done, otherwise 1.
    [[nodiscard]] int exitCode() const { return m_failed ? 1 : 0; }

protected:
    /// What is done with a card. The failure is a sentence for people.
    [[nodiscard]] virtual std::expected<void, QString> handle(const CardRecord& record) = 0;

private:
    void fail(const QString& reason);

    bool m_failed = false;
};
