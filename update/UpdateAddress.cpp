#include "update/UpdateAddress.h"

#include "platform/files/FileName.h"

#include <QFileInfo>
#include <QHostAddress>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

// No programs or links: a desktop might run them.
constexpr std::array packageEndings{
    ".deb"_L1, ".rpm"_L1, ".flatpak"_L1, ".appimage"_L1, ".zip"_L1, ".tar.gz"_L1, ".tar.xz"_L1, ".tar.zst"_L1,
};

bool isEncrypted(const QUrl& address)
{
    return address.scheme() == "https"_L1;
}

bool isComplete(const QUrl& address)
{
    return address.isValid() && !address.host().isEmpty() && address.userInfo().isEmpty();
}

bool isPlainLoopback(const QUrl& address)
{
    return address.scheme() == "http"_L1 && isLoopbackAddress(address);
}

} // namespace

bool isLoopbackAddress(const QUrl& address)
{
    // Only IP addresses: a name, even "localhost", depends on the name service.
    QHostAddress host;
    return host.setAddress(address.host()) && host.isLoopback();
}

bool isSafeFeedAddress(const QUrl& address)
{
    return isComplete(address) && (isEncrypted(address) || isPlainLoopback(address));
}

bool isSafePackageAddress(const QUrl& address, const QUrl& feedAddress)
{
    return isSafeFeedAddress(address) && (isEncrypted(address) || isPlainLoopback(feedAddress));
}

bool isSafeRedirect(const QUrl& address)
{
    return isComplete(address) && isEncrypted(address);
}

std::optional<QString> packageFileName(const QUrl& address)
{
    const QString name = address.fileName(QUrl::FullyDecoded);
    const auto* const ending = std::ranges::find_if(
        packageEndings, [&name](QLatin1StringView candidate) { return name.endsWith(candidate, Qt::CaseInsensitive); });
    if (ending == packageEndings.end() || name.size() == ending->size() || name.startsWith(u'.'))
        return std::nullopt;
    // Removes control characters and limits the length.
    const QString extension = name.last(ending->size() - 1);
    return fileNameFromText(name.chopped(ending->size()), extension);
}
