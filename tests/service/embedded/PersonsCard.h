#pragma once

#include "platform/XmlDocument.h"
#include "service/embedded/CardDocument.h"
#include "tests/service/embedded/SmallCard.h"

#include <map>
#include <string>

using namespace Qt::StringLiterals;

// Cards of the small map, made of persons whose parts a test can change, and the result of reading them.

inline const CardFileId serialId = smallCardFile(1);
inline const CardFileId personsId = smallCardFile(2);

inline CardMap mapChanged(const QString& path, const QJsonValue& value)
{
    return parseCardMap(mapWith(path, value)).value();
}

/// The parts of a person, by tag; those of the coverage are in A1.
using Parts = std::map<QByteArray, QByteArray>;

inline QByteArray objectsOf(const Parts& parts)
{
    QByteArray bytes;
    for (const auto& [tag, value] : parts)
        bytes += tlv(tag.constData(), value);
    return bytes;
}

inline Parts insuredParts()
{
    return {{"80", "SPECIMEN"}, {"81", "H\xE9l\xE8ne"}, {"82", "19850514"}, {"83", "1"}, {"93", "2850575116123"}};
}

inline Parts coverageParts()
{
    return {{"80", "0"}, {"81", "01"}, {"82", "751"}, {"83", "8801"}, {"84", "10"}};
}

inline QByteArray person(const Parts& parts, const Parts& coverage, const QByteArray& more = {})
{
    return tlv("65", objectsOf(parts) + tlv("A1", objectsOf(coverage)) + more);
}

inline QByteArray insured()
{
    return person(insuredParts(), coverageParts());
}

inline QByteArray child()
{
    Parts parts = insuredParts();
    parts["81"] = "Zo\xE9";
    parts.erase("93");
    return person(parts, {{"80", "6"}});
}

inline CardContent cardOf(const QByteArray& persons)
{
    return {{serialId, tlv("5A", QByteArray::fromHex("0012AB"))}, {personsId, persons}};
}

/// The fault of the card; empty when there is a document.
inline QString gapOf(const CardContent& content, const CardMap& map = smallCardMap())
{
    const auto document = cardDocument(map, content);
    return document ? QString() : document.error().explanation;
}

inline QStringList missingIn(const CardContent& content)
{
    const auto document = cardDocument(smallCardMap(), content);
    return document || document.error().kind != CardGap::Kind::Missing ? QStringList() : document.error().missing;
}

inline bool isDamaged(const CardContent& content)
{
    const auto document = cardDocument(smallCardMap(), content);
    return !document && document.error().kind == CardGap::Kind::Damaged && document.error().missing.isEmpty();
}

/// Texts of the elements at a path in the document, each in quotes; or the fault.
inline QString textsAt(const std::string& path, const CardContent& content, const CardMap& map = smallCardMap())
{
    const auto document = cardDocument(map, content);
    if (!document)
        return document.error().explanation;
    const auto xml = XmlDocument::fromText(*document);
    QStringList texts;
    for (const XmlNode& node : xml->documentNode().nodes("T_AsnDonneesVitale/" + path))
        texts.append(u'"' + node.stringValue().trimmed() + u'"');
    return texts.join(u' ');
}

inline const std::string beneficiary = "listeBenef/T_AsnBeneficiaire/";

/// The small map with a second source of records.
inline CardMap mapWithSource(const QJsonObject& source)
{
    const QJsonObject json = withValue(smallMap(), {u"files"_s, u"2"_s},
                                       QJsonObject{{u"name"_s, u"couverture"_s},
                                                   {u"application"_s, u"F000000000"_s},
                                                   {u"file"_s, u"0003"_s},
                                                   {u"required"_s, false}})
                                 .toObject();
    return mapOf(withValue(json, {u"beneficiaries"_s, u"1"_s}, source).toObject());
}

inline QJsonObject exemptionSource(bool isLinked)
{
    const QJsonObject field{{u"path"_s, u"amo/libelleExo"_s}, {u"tag"_s, u"81"_s}, {u"form"_s, u"text"_s}};
    QJsonObject source{{u"file"_s, u"couverture"_s}, {u"record"_s, u"66"_s}, {u"fields"_s, QJsonArray{field}}};
    if (isLinked)
        source.insert(u"link"_s, QJsonObject{{u"own"_s, u"80"_s}, {u"beneficiary"_s, u"81"_s}});
    return source;
}

inline QByteArray exemption(const QByteArray& key, const QByteArray& label)
{
    return tlv("66", tlv("80", key) + tlv("81", label));
}
