#pragma once

#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>

class Bundle;

/// Limits of a check, whatever the server does.
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

/// The update configuration of an installed program.
struct UpdateConfiguration
{
    /// The address of the feed; absent when none is configured.
    std::optional<QUrl> feed;
    /// The maker's Ed25519 public key in base64.
    QByteArray publicKey;
    /// Whether checks are made automatically.
    bool automaticChecks = false;
    /// The running version: for comparison, and for users.
    QString version;
    QString shortVersion;
    /// The version of the C library, which decides which programs run.
    QString systemVersion;
    /// Whether a package manager installed the program and updates it.
    bool isPackaged = false;
    /// The folder for downloads.
    QString folder;
    UpdateLimits limits;

    /// Reads "SUFeedURL", "SUPublicEDKey", "SUEnableAutomaticChecks" and the versions of the information dictionary,
    /// and the user's cache folder. Needs a QCoreApplication.
    [[nodiscard]] static UpdateConfiguration fromBundle(const Bundle& bundle);
};

/// Whether a package manager owns programs in that folder, for example under /usr but not under /usr/local.
[[nodiscard]] bool isPackageManagersFolder(const QString& folder);
