#pragma once

#include "service/embedded/CardMap.h"
#include "tests/service/embedded/CardBytes.h"
#include "tests/service/embedded/MapJson.h"

inline CardMap mapOf(const QJsonObject& json)
{
    return parseCardMap(QJsonDocument(json).toJson()).value();
}

/// The map of the small cards below.
inline CardMap smallCardMap()
{
    return mapOf(smallMap());
}

inline const QByteArray smallCardApplication = QByteArray::fromHex("F000000000");

inline CardFileId smallCardFile(quint16 file)
{
    return {smallCardApplication, file};
}

/// A card of the small map with all needed fields. Two cards with different letters have no value in common.
inline CardContent smallCard(char letter)
{
    const QByteArray text(3, letter);
    const QByteArray digit(1, static_cast<char>('1' + letter % 8));
    const QByteArray coverage = tlv("80", "0") + tlv("81", "0" + digit) + tlv("82", "75" + digit) +
                                tlv("83", "880" + digit) + tlv("84", "1" + digit);
    const QByteArray person = tlv("80", text + "A") + tlv("81", text + "B") + tlv("82", "1985051" + digit) +
                              tlv("83", digit) + tlv("93", "285057511612" + digit) + tlv("A1", coverage);
    return {{smallCardFile(1), tlv("5A", text)}, {smallCardFile(2), tlv("65", person)}};
}
