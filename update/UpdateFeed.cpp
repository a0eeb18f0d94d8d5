#include "update/UpdateFeed.h"

#include "update/UpdateAddress.h"
#include "update/VersionComparison.h"

#include <QXmlStreamReader>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView extensionNamespace{u"http://www.andymatuschak.org/xml-namespaces/sparkle"};
constexpr QStringView thisSystem{u"linux"};

// The texts of an item.
struct RawItem
{
    QString version;
    QString shortVersion;
    QString minimumSystemVersion;
    QString channel;
    QString description;
    QString descriptionFormat;
    QString url;
    QString length;
    QString signature;
    QString system;
};

struct Field
{
    QStringView name;
    QString RawItem::* value = nullptr;
};

// Elements of an item, and attributes of its enclosure. Versions may be in either.
constexpr std::array itemFields{
    Field{u"version", &RawItem::version},
    Field{u"shortVersionString", &RawItem::shortVersion},
    Field{u"minimumSystemVersion", &RawItem::minimumSystemVersion},
    Field{u"channel", &RawItem::channel},
};
constexpr std::array enclosureFields{
    Field{u"version", &RawItem::version},
    Field{u"shortVersionString", &RawItem::shortVersion},
    Field{u"edSignature", &RawItem::signature},
    Field{u"os", &RawItem::system},
};

bool isExtension(const QXmlStreamReader& reader)
{
    return reader.namespaceUri() == extensionNamespace;
}

bool isPlain(const QXmlStreamReader& reader, QStringView name)
{
    return reader.namespaceUri().isEmpty() && reader.name() == name;
}

void readEnclosure(QXmlStreamReader& reader, RawItem& item)
{
    const QXmlStreamAttributes attributes = reader.attributes();
    item.url = attributes.value("url"_L1).toString();
    item.length = attributes.value("length"_L1).toString();
    for (const Field& field : enclosureFields) {
        const QStringView value = attributes.value(extensionNamespace.toString(), field.name.toString());
        if (!value.isEmpty())
            item.*field.value = value.toString();
    }
    reader.skipCurrentElement();
}

void readItemElement(QXmlStreamReader& reader, RawItem& item)
{
    if (isPlain(reader, u"enclosure"))
        return readEnclosure(reader, item);
    if (isPlain(reader, u"description")) {
        item.descriptionFormat = reader.attributes().value(extensionNamespace.toString(), u"format"_s).toString();
        item.description = reader.readElementText(QXmlStreamReader::SkipChildElements);
        return;
    }
    const auto* const field = std::ranges::find_if(itemFields, [&reader](const Field& candidate) {
        return isExtension(reader) && reader.name() == candidate.name;
    });
    if (field == itemFields.end())
        return reader.skipCurrentElement();
    item.*field->value = reader.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
}

RawItem readItem(QXmlStreamReader& reader)
{
    RawItem item;
    while (reader.readNextStartElement())
        readItemElement(reader, item);
    return item;
}

// The items; absent when the document is not a complete feed.
std::optional<std::vector<RawItem>> readItems(QXmlStreamReader& reader)
{
    while (!reader.atEnd() && !reader.isStartElement()) {
        // Feeds need no entities, so a document type is refused.
        if (reader.readNext() == QXmlStreamReader::DTD)
            return std::nullopt;
    }
    if (!reader.isStartElement() || !isPlain(reader, u"rss"))
        return std::nullopt;

    std::vector<RawItem> items;
    while (reader.readNextStartElement()) {
        if (!isPlain(reader, u"channel")) {
            reader.skipCurrentElement();
            continue;
        }
        while (reader.readNextStartElement()) {
            if (isPlain(reader, u"item"))
                items.push_back(readItem(reader));
            else
                reader.skipCurrentElement();
        }
    }
    while (!reader.atEnd())
        reader.readNext();
    return reader.hasError() ? std::nullopt : std::optional(std::move(items));
}

UpdateFeed::Announcement announcementOf(const RawItem& raw, const QUrl& address, qint64 maximumLength)
{
    UpdateFeed::Announcement announcement;
    UpdateItem& item = announcement.item;
    item.version = raw.version;
    item.shortVersion = raw.shortVersion.isEmpty() ? raw.version : raw.shortVersion;
    item.minimumSystemVersion = raw.minimumSystemVersion;
    item.notes = raw.description;
    item.notesMayBeHtml = raw.descriptionFormat != "plain-text"_L1;
    item.package = address.resolved(QUrl(raw.url, QUrl::StrictMode));
    bool isNumber = false;
    item.length = raw.length.toLongLong(&isNumber);
    const std::optional<QString> name = packageFileName(item.package);
    item.packageName = name.value_or(QString());
    const std::optional<UpdateSignature> signature = signatureFromBase64(raw.signature.toLatin1());
    item.signature = signature.value_or(UpdateSignature{});

    const bool badSystem = !item.minimumSystemVersion.isEmpty() && !isVersion(item.minimumSystemVersion);
    if (raw.url.isEmpty() || !isNumber || item.length <= 0 || badSystem)
        announcement.fault = UpdateFailure::Incomplete;
    else if (!name || !isSafePackageAddress(item.package, address))
        announcement.fault = UpdateFailure::UnsafePackageAddress;
    else if (!signature)
        announcement.fault = UpdateFailure::Unsigned;
    else if (item.length > maximumLength)
        announcement.fault = UpdateFailure::PackageTooLarge;
    return announcement;
}

} // namespace

std::expected<UpdateFeed, UpdateFailure> UpdateFeed::parse(const QByteArray& xml, const QUrl& address,
                                                           qint64 maximumLength)
{
    QXmlStreamReader reader(xml);
    const std::optional<std::vector<RawItem>> items = readItems(reader);
    if (!items)
        return std::unexpected(UpdateFailure::NotAFeed);
    if (items->empty())
        return std::unexpected(UpdateFailure::EmptyFeed);

    UpdateFeed feed;
    bool hasVersion = false;
    for (const RawItem& item : *items) {
        if (!isVersion(item.version))
            continue;
        hasVersion = true;
        // Versions for other systems and for volunteers (channels) are skipped.
        const bool isOurs = item.system.isEmpty() || item.system.compare(thisSystem, Qt::CaseInsensitive) == 0;
        if (isOurs && item.channel.isEmpty())
            feed.m_announcements.push_back(announcementOf(item, address, maximumLength));
    }
    if (!hasVersion)
        return std::unexpected(UpdateFailure::Incomplete);
    return feed;
}

std::expected<UpdateChoice, UpdateFailure> chooseUpdate(const UpdateFeed& feed, const QString& currentVersion,
                                                        const QString& systemVersion)
{
    const auto isNewer = [](const UpdateItem& item, const QString& version) {
        return std::is_gt(compareVersions(item.version, version));
    };
    // The newest item that passes; the first one if there are several.
    const auto newestThat = [&](const auto& passes) {
        const UpdateFeed::Announcement* newest = nullptr;
        for (const UpdateFeed::Announcement& candidate : feed.announcements()) {
            if (isNewer(candidate.item, newest == nullptr ? currentVersion : newest->item.version) && passes(candidate))
                newest = &candidate;
        }
        return newest;
    };
    const auto isFaulty = [](const UpdateFeed::Announcement& announcement) { return announcement.fault.has_value(); };
    const auto runsHere = [&](const UpdateFeed::Announcement& announcement) {
        return !isFaulty(announcement) &&
               !std::is_gt(compareVersions(announcement.item.minimumSystemVersion, systemVersion));
    };

    if (const auto* found = newestThat(runsHere))
        return UpdateChoice{UpdateChoice::Kind::Available, found->item};
    if (const auto* faulty = newestThat(isFaulty))
        return std::unexpected(*faulty->fault);
    if (const auto* demanding = newestThat([](const auto&) { return true; }))
        return UpdateChoice{UpdateChoice::Kind::NeedsNewerSystem, demanding->item};
    return UpdateChoice{};
}
