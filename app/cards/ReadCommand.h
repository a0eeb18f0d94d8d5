#pragma once

#include "app/cards/CardsCommand.h"

/// "pelmora --read": gives what is on cards to another program, as JSON. Main thread.
class ReadCommand final : public CardsCommand
{
public:
    using CardsCommand::CardsCommand;

protected:
    [[nodiscard]] std::expected<CardOutcome, Error> handle(const CardSource& source, const CardRecord& record) override;
};
