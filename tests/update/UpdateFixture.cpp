#include "tests/update/UpdateFixture.h"

using namespace Qt::StringLiterals;

UpdateFixture::UpdateFixture()
{
    publish();
}

void UpdateFixture::publish(const QByteArray& version, const QByteArray& more)
{
    FeedItem item;
    item.version = version;
    item.shortVersion = version;
    item.url = m_server.address(u"/pelmora.deb"_s).toEncoded();
    item.length = QByteArray::number(package().size());
    item.signature = m_key.sign(package());
    item.more = more;
    setFeed(feedXml(itemXml(item)));
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
    UpdateConfiguration configuration;
    configuration.feed = m_server.address(u"/feed"_s);
    configuration.publicKey = m_key.publicKey();
    configuration.version = u"1.0"_s;
    configuration.shortVersion = u"1.0"_s;
    configuration.systemVersion = u"2.36"_s;
    configuration.folder = folder();
    return configuration;
}
