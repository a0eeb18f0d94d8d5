#include "tests/update/UpdateFixture.h"

using namespace Qt::StringLiterals;

UpdateConfiguration configurationOf(const QUrl& feed, const SigningKey& key, const QString& folder)
{
    UpdateConfiguration configuration;
    configuration.feed = feed;
    configuration.publicKey = key.publicKey();
    configuration.version = u"1.0"_s;
    configuration.shortVersion = u"1.0"_s;
    configuration.systemVersion = u"2.36"_s;
    configuration.folder = folder;
    return configuration;
}

UpdateFixture::UpdateFixture()
{
    publish();
}

void UpdateFixture::publish(const QByteArray& version, const QByteArray& more)
{
    setFeed(feedXml(itemXml({.version = version,
                             .shortVersion = version,
                             .url = m_server.address(u"/pelmora.deb"_s).toEncoded(),
                             .length = QByteArray::number(package().size()),
                             .signature = m_key.sign(package()),
                             .more = more})));
    m_server.setAnswer(u"/pelmora.deb"_s, UpdateServer::ok("application/octet-stream", package()));
}

void UpdateFixture::setFeed(const QByteArray& xml)
{
    m_server.setAnswer(u"/feed"_s, UpdateServer::ok("text/xml", xml));
}

QString UpdateFixture::folder() const
{
    return m_home.filePath(u"updates"_s);
}

QString UpdateFixture::settingsPath() const
{
    return m_home.filePath(u"settings.conf"_s);
}

UpdateConfiguration UpdateFixture::configuration() const
{
    return configurationOf(m_server.address(u"/feed"_s), m_key, folder());
}
