#pragma once

#include "service/ReadingLibrary.h"

#include <memory>

/// Uses the reading library of the access mode: the installed one, the service's own, or the first of these that can be
/// initialised. Before the first initialise the service's own is used, after a failed one none.
class LibraryChoice final : public ReadingLibrary
{
public:
    /// The installed library is initialised at every change of mode, so that it releases its readers.
    LibraryChoice(std::unique_ptr<ReadingLibrary> installed, std::unique_ptr<ReadingLibrary> embedded);

    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode mode) override;
    [[nodiscard]] QStringList readers() override;
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) override;
    [[nodiscard]] QString informations() override;
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override;
    [[nodiscard]] std::unique_ptr<ReaderWatch> watchReader(const ReaderReport& report) override;
    [[nodiscard]] QString hint() const override;
    [[nodiscard]] QString waitsFor() const override;

private:
    std::unique_ptr<ReadingLibrary> m_installed;
    std::unique_ptr<ReadingLibrary> m_embedded;
    ReadingLibrary* m_inUse; // one of the two, or null
};
