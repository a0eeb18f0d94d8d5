#include "service/SimulatedReader.h"

#include "card/wire/ReaderModel.h"
#include "card/wire/XmlBytes.h"
#include "platform/FileDescriptor.h"
#include "service/CardCoverage.h"
#include "service/LibraryVersions.h"

#include <QFile>

#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

std::expected<QByteArray, ReadResult> readCardFile(const QByteArray& path)
{
    // Non-blocking, so that opening a named pipe, which is refused below, does not wait.
    const FileDescriptor file(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isValid())
        return std::unexpected(errno == ENOENT || errno == ENOTDIR ? ReadResult::CardAbsent : ReadResult::ReadError);
    struct stat status = {};
    QFile content;
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > SimulatedReader::maximumFileSize ||
        !content.open(file.get(), QIODevice::ReadOnly | QIODevice::Unbuffered))
        return std::unexpected(ReadResult::ReadError);
    QByteArray bytes = content.readAll();
    if (content.error() != QFileDevice::NoError)
        return std::unexpected(ReadResult::ReadError);
    return bytes;
}

} // namespace

SimulatedReader::SimulatedReader(QByteArray cardPath)
    : m_cardPath(std::move(cardPath))
{
}

std::optional<LibraryKind> SimulatedReader::initialise(LibraryMode mode)
{
    return mode == LibraryMode::System ? LibraryKind::System : LibraryKind::Embedded;
}

QStringList SimulatedReader::readers()
{
    return {acceptedReader.toString()};
}

bool SimulatedReader::chooseReaders(const QString& vitaleReader, const QString& professionalReader)
{
    const QStringList known = readers();
    return known.contains(vitaleReader) && known.contains(professionalReader);
}

QString SimulatedReader::informations()
{
    return informationsDocument({.library = u"%1 (simulation)"_s.arg(QLatin1StringView(PELMORA_VERSION)),
                                 .cardTable = u"simulation"_s,
                                 .destinationTable = u"simulation"_s,
                                 .authorisationTable = u"simulation"_s});
}

std::expected<QString, ReadResult> SimulatedReader::readCard()
{
    const std::expected<QByteArray, ReadResult> bytes = readCardFile(m_cardPath);
    if (!bytes)
        return std::unexpected(bytes.error());
    std::optional<QString> text = decodeXmlBytes(*bytes);
    if (!text || !cardCoverage(*text))
        return std::unexpected(ReadResult::ReadError);
    return *std::move(text);
}

std::unique_ptr<ReaderWatch> SimulatedReader::watchReader(const ReaderReport& report)
{
    report(CardReaderState::Card);
    return nullptr;
}
