#pragma once

#include "service/LibraryVersions.h"
#include "service/ReaderNames.h"
#include "service/ReadingLibrary.h"
#include "service/installed/InstalledFunctions.h"

/// A shared object with the functions of include/pelmora/reading-library.h. Refusals are logged.
class InstalledLibrary final : public ReadingLibrary
{
public:
    [[nodiscard]] static SystemPlace standardPlace();

    explicit InstalledLibrary(SystemPlace place = standardPlace());
    InstalledLibrary(const InstalledLibrary&) = delete;
    InstalledLibrary& operator=(const InstalledLibrary&) = delete;
    /// Closes the library.
    ~InstalledLibrary() override;

    /// Closes the library; absent for the embedded mode.
    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode mode) override;
    [[nodiscard]] QStringList readers() override;
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) override;
    [[nodiscard]] QString informations() override;
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override;

    /// The values of informations(); empty while the library is not open.
    [[nodiscard]] LibraryVersions versions() const;

private:
    [[nodiscard]] bool load();
    [[nodiscard]] bool open();
    void close();
    [[nodiscard]] QList<ReaderName> namedReaders() const;
    [[nodiscard]] QString version(pelmora_reading_component component) const;

    SystemPlace m_place;
    std::optional<InstalledFunctions> m_functions;
    bool m_isOpen = false;
};
