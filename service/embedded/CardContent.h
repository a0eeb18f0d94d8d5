#pragma once

#include <QStringList>

#include <compare>
#include <map>

/// A transparent file of a card: the name of its application, and its two-byte identifier there.
struct CardFileId
{
    QByteArray application;
    quint16 file = 0;

    friend bool operator==(const CardFileId&, const CardFileId&) = default;
    friend std::strong_ordering operator<=>(const CardFileId&, const CardFileId&) = default;
};

/// The bytes of each file that was read. A file that the card refused has no entry.
using CardContent = std::map<CardFileId, QByteArray>;

/// Why a card's content makes no document.
struct CardGap
{
    enum class Kind
    {
        Damaged, // bytes that do not match the map
        Missing  // valid, but not enough for an attestation
    };

    Kind kind = Kind::Damaged;
    QString explanation; // for the log, in French, without values
    QStringList missing; // the missing elements, for Kind::Missing

    friend bool operator==(const CardGap&, const CardGap&) = default;
};
