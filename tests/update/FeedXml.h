#pragma once

#include <QByteArray>

/// The values of a feed's item. An absent value leaves out its element or attribute.
struct FeedItem
{
    QByteArray version = "2.0";
    QByteArray shortVersion = "2.0";
    QByteArray url = "https://updates.morvel.example/pelmora_2.0_amd64.deb";
    QByteArray length = "7";
    QByteArray signature = QByteArray(64, 's').toBase64();
    QByteArray more = {};
    QByteArray moreAttributes = {};
};

inline QByteArray attribute(const QByteArray& name, const QByteArray& value)
{
    return value.isNull() ? QByteArray() : ' ' + name + "=\"" + value + '"';
}

inline QByteArray element(const QByteArray& name, const QByteArray& value)
{
    return value.isNull() ? QByteArray() : '<' + name + '>' + value + "</" + name + '>';
}

inline QByteArray itemXml(const FeedItem& item)
{
    return "<item><title>Version</title>" + element("sparkle:version", item.version) +
           element("sparkle:shortVersionString", item.shortVersion) + item.more + "<enclosure" +
           attribute("url", item.url) + attribute("length", item.length) +
           attribute("sparkle:edSignature", item.signature) + item.moreAttributes +
           " type=\"application/octet-stream\"/></item>";
}

inline QByteArray feedXml(const QByteArray& items)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<rss version=\"2.0\" xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\">"
           "<channel><title>Pelmora</title>" +
           items + "</channel></rss>\n";
}
