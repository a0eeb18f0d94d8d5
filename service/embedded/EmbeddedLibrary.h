#pragma once

#include "service/ReaderNames.h"
#include "service/ReadingLibrary.h"
#include "service/embedded/CardReading.h"
#include "service/pcsc/CardReaders.h"

#include <array>
#include <atomic>

/// The service's own reading library: reads health cards through PC/SC by card maps. Of several readers of the chosen
/// model, the one with a card is used. Failures are logged.
class EmbeddedLibrary final : public ReadingLibrary
{
public:
    EmbeddedLibrary(std::unique_ptr<CardReaders> readers, std::vector<CardMap> maps);

    /// Absent in the mode for the installed library only.
    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode mode) override;
    [[nodiscard]] QStringList readers() override;
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) override;
    [[nodiscard]] QString informations() override;
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override;
    [[nodiscard]] std::unique_ptr<ReaderWatch> watchReader(const ReaderReport& report) override;
    [[nodiscard]] QString hint() const override { return m_hint; }
    [[nodiscard]] QString waitsFor() const override;

private:
    /// A fault that is tried again: how often, and what to do before.
    struct Remedy
    {
        CardFault fault = CardFault::Unexpected;
        int attempts = 0;
        void (EmbeddedLibrary::*prepare)() = nullptr;
    };
    static const std::array<Remedy, 6> remedies;

    [[nodiscard]] QList<ReaderName> namedReaders();
    [[nodiscard]] std::expected<QString, CardFailure> readPatiently();
    [[nodiscard]] std::expected<QString, CardFailure> readOnce();
    [[nodiscard]] std::expected<QString, CardFailure> readIn(const QByteArray& reader);
    void waitForCard();
    void waitForRemoval();
    void waitForTurn();
    void waitForService();
    void findReaderAnew();

    std::unique_ptr<CardReaders> m_readers;
    std::vector<CardMap> m_maps;
    std::optional<ReaderName> m_vitaleReader;
    QString m_hint;
    // Set by the thread that reads, read by another one after the time limit.
    std::atomic<bool> m_isConnecting = false;
};
