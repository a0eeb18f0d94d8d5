#pragma once

#include "service/ReadingLibrary.h"

/// A library that has no reader and never will: no card can be read through it.
class ReaderlessLibrary final : public ReadingLibrary
{
public:
    [[nodiscard]] std::optional<LibraryKind> initialise(AccessMode mode) override;
    [[nodiscard]] QStringList readers() override;
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) override;
    [[nodiscard]] QString informations() override;
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override;
};
