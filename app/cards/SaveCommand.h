#pragma once

#include "app/cards/CardsCommand.h"

class AttestationFiles;

/// "pelmora --save": makes attestations without a window. Each path goes to the standard output, a line each. Main
/// thread; the files must outlive it.
class SaveCommand final : public CardsCommand
{
public:
    explicit SaveCommand(const AttestationFiles& files)
        : m_files(files)
    {
    }

protected:
    [[nodiscard]] std::expected<void, QString> handle(const CardRecord& record) override;

private:
    const AttestationFiles& m_files;
};
