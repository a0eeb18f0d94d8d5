#include "service/SimulatedReader.h"

#include "card/wire/ReaderModel.h"
#include "card/wire/XmlBytes.h"
#include "platform/FileDescriptor.h"
#include "service/CardCoverage.h"
#include "service/LibraryVersions.h"

#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

/// Reads up to the limit and one byte more, which tells that the file is longer. Nothing on an error.
std::optional<QByteArray> readUpTo(const FileDescriptor& file, qsizetype limit, qsizetype expectedSize)
{
    QByteArray bytes;
    bytes.reserve(std::min(expectedSize, limit) + 1);
    constexpr qsizetype step = qsizetype{64} * 1024;
    while (bytes.size() <= limit) {
        const qsizetype size = bytes.size();
        bytes.resize(size + std::min(step, limit + 1 - size));
        const ssize_t count = ::read(file.get(), bytes.data() + size, static_cast<std::size_t>(bytes.size() - size));
        if (count < 0 && errno != EINTR)
            return std::nullopt;
        bytes.resize(size + std::max(count, ssize_t(0)));
        if (count == 0)
            break;
    }
    return bytes;
}

std::expected<QByteArray, ReadResult> readCardFile(const QByteArray& path)
{
    // Not to wait for a writer where the path is a named pipe, which is refused below.
    const FileDescriptor file(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isValid())
        return std::unexpected(errno == ENOENT || errno == ENOTDIR ? ReadResult::CardAbsent : ReadResult::ReadError);
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::unexpected(ReadResult::ReadError);
    std::optional<QByteArray> bytes = readUpTo(file, SimulatedReader::maximumFileSize, status.st_size);
    if (!bytes || bytes->size() > SimulatedReader::maximumFileSize)
        return std::unexpected(ReadResult::ReadError);
    return *std::move(bytes);
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
