#pragma once

#include "service/ReadingLibrary.h"

#include <QByteArray>

/// A reader whose card is an XML file, present while the file exists. Each readCard reads the file.
class SimulatedReader final : public ReadingLibrary
{
public:
    /// Bytes; a larger file is not read.
    static constexpr qsizetype maximumFileSize = qsizetype{16} * 1024 * 1024;

    /// The path is in the file system's encoding.
    explicit SimulatedReader(QByteArray cardPath);

    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode mode) override;
    [[nodiscard]] QStringList readers() override;
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) override;
    [[nodiscard]] QString informations() override;
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override;
    [[nodiscard]] std::unique_ptr<ReaderWatch> watchReader(const ReaderReport& report) override;

private:
    QByteArray m_cardPath;
};
