#pragma once

#include <QString>
#include <QUrl>

#include <optional>

/// Whether an address leads to this machine by its number, so that nothing asked of it travels over a network.
[[nodiscard]] bool isLoopbackAddress(const QUrl& address);

/// Whether a feed may be fetched from an address: over HTTPS, or over plain HTTP from this machine itself, which is how
/// tests and a relay that a practice runs on the computer offer one. An address that holds a password is none.
[[nodiscard]] bool isSafeFeedAddress(const QUrl& address);

/// Whether a package may be fetched from an address that a feed names: only a feed that came over plain HTTP from this
/// machine may send back to it.
[[nodiscard]] bool isSafePackageAddress(const QUrl& address, const QUrl& feedAddress);

/// Whether a server may send on to an address: over HTTPS only, wherever it was asked, and without a password.
[[nodiscard]] bool isSafeRedirect(const QUrl& address);

/// The file name of a package, as the end of its address tells it; absent when that is not the name of a package that a
/// desktop installs or unpacks.
[[nodiscard]] std::optional<QString> packageFileName(const QUrl& address);
