#pragma once

#include "service/ReadingLibrary.h"

#include <QByteArray>

/// A reader whose card is a file of card XML: the card is in the reader while the file exists. The file is read anew by
/// each readCard.
class SimulatedReader final : public ReadingLibrary
{
public:
    /// Bytes beyond which a file is no card.
    static constexpr qsizetype maximumFileSize = qsizetype{16} * 1024 * 1024;

    /// The path is in the file system's own bytes.
    explicit SimulatedReader(QByteArray cardPath);

    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode mode) override;
    [[nodiscard]] QStringList readers() override;
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) override;
    [[nodiscard]] QString informations() override;
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override;

private:
    QByteArray m_cardPath;
};
