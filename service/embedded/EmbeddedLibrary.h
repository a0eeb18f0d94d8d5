#pragma once

#include "service/ReaderNames.h"
#include "service/ReadingLibrary.h"
#include "service/embedded/CardReading.h"
#include "service/pcsc/CardReaders.h"

#include <array>
#include <atomic>

/// The service's own reading library: health cards in the system's readers, understood by card maps. Of several readers
/// of the chosen one's model, the one that holds a card is read. Each failure is told in the log.
class EmbeddedLibrary final : public ReadingLibrary
{
public:
    EmbeddedLibrary(std::unique_ptr<CardReaders> readers, std::vector<CardMap> maps);

    /// Embedded, but in the mode that wants the system's library only.
    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode mode) override;
    [[nodiscard]] QStringList readers() override;
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) override;
    [[nodiscard]] QString informations() override;
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override;
    [[nodiscard]] QString hint() const override { return m_hint; }
    [[nodiscard]] QString waitsFor() const override;

private:
    /// What is worth another attempt: how often, and what to do before, if anything.
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
    // Set by the thread that reads, and looked at by another when the time is over.
    std::atomic<bool> m_isConnecting = false;
};
