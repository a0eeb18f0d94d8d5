#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>

class Bundle;

/// How far a check may go. Whatever a server does, it ends within these bounds.
struct UpdateLimits
{
    qint64 feedSize = qint64{1024} * 1024;            // bytes
    qint64 packageSize = qint64{256} * 1024 * 1024;   // bytes
    int redirects = 5;                                // of one address
    std::chrono::milliseconds stall{30'000};          // without a byte
    std::chrono::milliseconds feedTime{60'000};       // for the whole feed
    std::chrono::milliseconds packageTime{3'600'000}; // for the whole package
    std::chrono::milliseconds firstCheck{10'000};     // from the start to the first automatic check
    std::chrono::milliseconds interval{86'400'000};   // between two automatic checks
};

/// What the updates of one installed program depend on.
struct UpdateConfiguration
{
    /// Where the feed is; absent when the program was given none.
    std::optional<QUrl> feed;
    /// The maker's Ed25519 public key, in base64 as it was given.
    QByteArray publicKey;
    /// Whether the program looks for updates by itself.
    bool automaticChecks = false;
    /// The running version: the one that is compared, and the one that people know.
    QString version;
    QString shortVersion;
    /// The version of the system's C library, which decides what programs run on it.
    QString systemVersion;
    /// Whether a package manager installed the program, and looks after its updates.
    bool isPackaged = false;
    /// Where packages are downloaded to.
    QString folder;
    UpdateLimits limits;

    /// The configuration of the running program: the information dictionary's "SUFeedURL", "SUPublicEDKey",
    /// "SUEnableAutomaticChecks" and versions, and the user's cache folder. Needs a QCoreApplication.
    [[nodiscard]] static UpdateConfiguration fromBundle(const Bundle& bundle);
};

/// Whether programs in that folder belong to the system's package manager: under /usr, but not under /usr/local.
[[nodiscard]] bool isPackageManagersFolder(const QString& folder);
