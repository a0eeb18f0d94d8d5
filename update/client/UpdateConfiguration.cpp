#include "update/client/UpdateConfiguration.h"

#include "platform/Bundle.h"

#include <QCoreApplication>
#include <QStandardPaths>

#include <algorithm>
#include <array>

#include <gnu/libc-version.h>

using namespace Qt::StringLiterals;

namespace {

struct Folder
{
    QLatin1StringView path;
    bool isPackageManagers = false;
};

// The first matching folder decides.
constexpr std::array folders{
    Folder{"/usr/local/"_L1, false}, Folder{"/usr/"_L1, true},       Folder{"/app/"_L1, true},
    Folder{"/snap/"_L1, true},       Folder{"/nix/store/"_L1, true}, Folder{"/gnu/store/"_L1, true},
};

// An invalid address is a wrong feed, not an absent one.
std::optional<QUrl> feedIn(const Bundle& bundle)
{
    const QVariant value = bundle.objectForInfoDictionaryKey(u"SUFeedURL");
    if (!value.isValid())
        return std::nullopt;
    return QUrl(value.toString(), QUrl::StrictMode);
}

} // namespace

bool isPackageManagersFolder(const QString& folder)
{
    const auto* const found = std::ranges::find_if(
        folders, [path = QString(folder + u'/')](const Folder& candidate) { return path.startsWith(candidate.path); });
    return found != folders.end() && found->isPackageManagers;
}

UpdateConfiguration UpdateConfiguration::fromBundle(const Bundle& bundle)
{
    const QVariant automatic = bundle.objectForInfoDictionaryKey(u"SUEnableAutomaticChecks");
    UpdateConfiguration configuration;
    configuration.feed = feedIn(bundle);
    configuration.publicKey = bundle.objectForInfoDictionaryKey(u"SUPublicEDKey").toString().toLatin1();
    // A boolean only, not a text.
    configuration.automaticChecks = automatic.typeId() == QMetaType::Bool && automatic.toBool();
    configuration.version = bundle.objectForInfoDictionaryKey(u"CFBundleVersion").toString();
    configuration.shortVersion = bundle.objectForInfoDictionaryKey(u"CFBundleShortVersionString").toString();
    configuration.systemVersion = QString::fromLatin1(gnu_get_libc_version());
    configuration.isPackaged = isPackageManagersFolder(QCoreApplication::applicationDirPath());
    configuration.folder =
        QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + "/MORVEL/Pelmora/updates"_L1;
    return configuration;
}
