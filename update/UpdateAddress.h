#pragma once

#include <QString>
#include <QUrl>

#include <optional>

/// Whether the address is a loopback IP address, so that requests do not use a network.
[[nodiscard]] bool isLoopbackAddress(const QUrl& address);

/// Whether a feed may be fetched: over HTTPS, or over HTTP from this machine, as in tests or with a local relay.
/// Addresses with a password are refused.
[[nodiscard]] bool isSafeFeedAddress(const QUrl& address);

/// Whether a package may be fetched: like a feed, but over HTTP only if the feed came over HTTP from this machine.
[[nodiscard]] bool isSafePackageAddress(const QUrl& address, const QUrl& feedAddress);

/// Whether a redirect may be followed: over HTTPS and without a password.
[[nodiscard]] bool isSafeRedirect(const QUrl& address);

/// The file name at the end of an address; absent when it is not that of an installable package.
[[nodiscard]] std::optional<QString> packageFileName(const QUrl& address);
