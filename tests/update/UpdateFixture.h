#pragma once

#include "tests/update/FeedXml.h"
#include "tests/update/SigningKey.h"
#include "tests/update/UpdateServer.h"
#include "update/client/UpdateConfiguration.h"

#include <QTemporaryDir>

/// The configuration of a program of version 1.0.
[[nodiscard]] UpdateConfiguration configurationOf(const QUrl& feed, const SigningKey& key, const QString& folder);

/// A server on loopback that publishes version 2.0, and the configuration of a program of version 1.0 that uses it.
class UpdateFixture
{
public:
    UpdateFixture();

    /// Publishes a valid version, with additional content in its item.
    void publish(const QByteArray& version = "2.0", const QByteArray& more = {});
    void setFeed(const QByteArray& xml);

    [[nodiscard]] UpdateServer& server() { return m_server; }
    [[nodiscard]] static QByteArray package() { return QByteArray(3'000'000, 'p'); }
    /// The folder of downloaded packages.
    [[nodiscard]] QString folder() const;
    [[nodiscard]] QString settingsPath() const;
    [[nodiscard]] UpdateConfiguration configuration() const;

private:
    QTemporaryDir m_home;
    SigningKey m_key;
    UpdateServer m_server;
};
