#pragma once

#include "tests/update/FeedXml.h"
#include "tests/update/SigningKey.h"
#include "tests/update/UpdateServer.h"
#include "update/client/UpdateConfiguration.h"

#include <QTemporaryDir>

/// A maker with a server on loopback that publishes version 2.0, and a program of version 1.0 that asks it.
class UpdateFixture
{
public:
    UpdateFixture();

    /// Publishes a version as it should be, with what is more in its item.
    void publish(const QByteArray& version = "2.0", const QByteArray& more = {});
    void setFeed(const QByteArray& xml);

    [[nodiscard]] UpdateServer& server() { return m_server; }
    [[nodiscard]] static QByteArray package() { return QByteArray(3'000'000, 'p'); }
    /// Where packages are downloaded to.
    [[nodiscard]] QString folder() const;
    [[nodiscard]] QString settingsPath() const;
    [[nodiscard]] UpdateConfiguration configuration() const;

private:
    QTemporaryDir m_home;
    SigningKey m_key;
    UpdateServer m_server;
};
