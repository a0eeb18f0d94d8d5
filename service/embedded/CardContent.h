#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <compare>
#include <map>

/// A transparent file of a card: the name by which its application is selected, and its own two-byte identifier there.
struct CardFileId
{
    QByteArray application;
    quint16 file = 0;

    friend bool operator==(const CardFileId&, const CardFileId&) = default;
    friend std::strong_ordering operator<=>(const CardFileId&, const CardFileId&) = default;
};

/// What was read of a card: the bytes of each file, from its first one to its end. A file that the card refused has no
/// entry.
using CardContent = std::map<CardFileId, QByteArray>;

/// Why the content of a card makes no document.
struct CardGap
{
    enum class Kind
    {
        Damaged, // bytes that are not what the map says
        Missing  // sound, but without what an attestation is made of
    };

    Kind kind = Kind::Damaged;
    QString explanation; // for the log, in French: names of files, tags and elements, never a value
    QStringList missing; // for Kind::Missing: the elements that lack

    friend bool operator==(const CardGap&, const CardGap&) = default;
};
