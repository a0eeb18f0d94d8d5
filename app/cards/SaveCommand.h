#pragma once

#include "app/cards/CardsCommand.h"

class AttestationFiles;

/// "pelmora --save": makes attestations without a window. The line of each is its path. Main thread; the files must
/// outlive it.
class SaveCommand final : public CardsCommand
{
public:
    SaveCommand(std::optional<CardResults> results, const AttestationFiles& files)
        : CardsCommand(std::move(results))
        , m_files(files)
    {
    }

protected:
    [[nodiscard]] std::expected<CardOutcome, Error> handle(const CardSource& source, const CardRecord& record) override;

private:
    const AttestationFiles& m_files;
};
