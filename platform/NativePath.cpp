#include "platform/NativePath.h"

#include <QFile>
#include <QUrl>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char16_t firstByte = 0xDC00; // plus the value of a byte that is not UTF-8
constexpr qsizetype longestCharacter = 4;

bool isByte(QChar character)
{
    return character.unicode() >= firstByte + 0x80 && character.unicode() <= firstByte + 0xFF;
}

/// The size of the UTF-8 character at the start of the bytes; 0 when there is none.
qsizetype lengthOfCharacter(QByteArrayView bytes)
{
    for (qsizetype length = 1; length <= std::min(bytes.size(), longestCharacter); ++length) {
        if (QUtf8StringView(bytes.data(), length).isValidUtf8())
            return length;
    }
    return 0;
}

} // namespace

QString pathFromBytes(QByteArrayView bytes)
{
    if (QUtf8StringView(bytes.data(), bytes.size()).isValidUtf8())
        return QString::fromUtf8(bytes);
    QString path;
    while (!bytes.isEmpty()) {
        const qsizetype length = lengthOfCharacter(bytes);
        if (length == 0)
            path += QChar(char16_t(firstByte + static_cast<unsigned char>(bytes.front())));
        else
            path += QString::fromUtf8(bytes.first(length));
        bytes = bytes.sliced(std::max(length, qsizetype{1}));
    }
    return path;
}

QByteArray bytesOfPath(QStringView path)
{
    QByteArray bytes;
    bytes.reserve(path.size());
    while (!path.isEmpty()) {
        // The second half of a surrogate pair is not a byte.
        const auto* begin = path.begin();
        const auto* byte = std::find_if(begin, path.end(), [begin](const QChar& character) {
            return isByte(character) && (&character == begin || !(&character)[-1].isHighSurrogate());
        });
        bytes += path.first(byte - begin).toUtf8();
        if (byte == path.end())
            break;
        bytes += static_cast<char>(byte->unicode() - firstByte);
        path = path.sliced(byte - begin + 1);
    }
    return bytes;
}

std::error_code openPlainFile(QFile& file, QStringView path)
{
    const int descriptor = open(bytesOfPath(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0)
        return {errno, std::system_category()};
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) ||
        !file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        close(descriptor);
        return std::make_error_code(std::errc::invalid_argument);
    }
    return {};
}

std::optional<QString> pathOfUrl(const QUrl& url)
{
    if (!url.isLocalFile() || !url.host().isEmpty())
        return std::nullopt;
    // Percent-encoded: QUrl would replace bytes that are not UTF-8.
    const QByteArray encoded = url.path(QUrl::FullyEncoded).toLatin1();
    const QString path = pathFromBytes(QByteArray::fromPercentEncoding(encoded));
    return path.startsWith(u'/') && !path.contains(QChar::Null) ? std::optional(path) : std::nullopt;
}
