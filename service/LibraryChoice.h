#pragma once

#include "service/ReadingLibrary.h"

#include <memory>

/// The reading library that the access mode asks for: the installed one, the service's own, or the first of these that
/// is there. Until the first initialise the service's own is in use; after one that is refused, none.
class LibraryChoice final : public ReadingLibrary
{
public:
    /// The installed library is told of every change of mode, so that it lets its readers go when it is not wanted.
    LibraryChoice(std::unique_ptr<ReadingLibrary> installed, std::unique_ptr<ReadingLibrary> embedded);

    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode mode) override;
    [[nodiscard]] QStringList readers() override;
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) override;
    [[nodiscard]] QString informations() override;
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override;
    [[nodiscard]] QString hint() const override;
    [[nodiscard]] QString waitsFor() const override;

private:
    std::unique_ptr<ReadingLibrary> m_installed;
    std::unique_ptr<ReadingLibrary> m_embedded;
    ReadingLibrary* m_inUse; // one of the two, or none
};
