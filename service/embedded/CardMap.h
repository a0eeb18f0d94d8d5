#pragma once

#include "service/embedded/CardContent.h"

#include <expected>
#include <optional>
#include <vector>

// A card map describes where a kind of card has its data and which elements they become. It is read from a data file
// (docs/card-data.md). A card is read in this order: firstCardFiles, otherCardFiles (CardFileList.h), the identity
// again. Then cardDocument (CardDocument.h) makes its XML.

/// The tags on the way to a value, outermost first; a tag is the number of its bytes (0x65, 0x5F37).
using TagPath = std::vector<quint32>;

/// How a value's bytes become text.
enum class CardForm
{
    Text,         // ISO 8859-1 without trailing blanks and null bytes
    Utf8,         // the same in UTF-8
    Digits,       // ASCII digits with leading zeros
    PackedDigits, // two digits a byte, padded with F
    Number,       // social-security number of 13 characters or 15 with its key, which is added when it is missing
    Date,         // YYYYMMDD in ASCII, converted to ddMMyyyy
    ShortDate,    // the same, converted to yyMMdd
    Hexadecimal   // two capital hexadecimal digits a byte
};

/// A value of a record: its place, its element and its form.
struct CardField
{
    QString path; // relative to the record's element, such as "ident/nomUsuel"
    TagPath tags;
    CardForm form = CardForm::Text;
};

/// Records within a record; each becomes an element.
struct CardSublist
{
    QString path;
    TagPath record;
    std::vector<CardField> fields;
};

/// Links a record to a beneficiary's record in another file by equal bytes.
struct CardLink
{
    TagPath own;
    TagPath beneficiary;
};

/// Records of a file with data of beneficiaries.
struct CardRecordSource
{
    QString file; // name of a file of the map; empty: all files named in the pointers file
    TagPath record;
    std::optional<CardLink>
        link; // none for the first source; elsewhere, without a link the first record is everybody's
    std::vector<CardField> fields;
    std::vector<CardSublist> lists;
};

/// A value that a card has once.
struct CardValue
{
    QString file; // name of a file of the map
    CardField field;
};

/// A file of the map, found by its identifier or by its name in the pointers file.
struct CardFile
{
    QString name; // for references in the map
    std::optional<CardFileId> id;
    QByteArray pointer;           // name in the pointers file; empty for a file with an identifier
    bool required = true;         // without this file the card cannot be used
    std::vector<TagPath> ignored; // unused objects; other unknown objects are damage

    friend bool operator==(const CardFile&, const CardFile&) = default;
};

/// One kind of card.
struct CardMap
{
    QString name;           // for users, in French
    QString version;        // for users
    QByteArray application; // a card that has this application is of this kind
    std::vector<CardFile> files;
    /// Files read first and last, to notice an exchanged card. At least one must be readable.
    std::vector<CardFileId> identity;
    std::optional<CardFileId> pointers; // the pointers file, which names others
    std::vector<CardValue> values;
    std::vector<CardRecordSource> beneficiaries; // the first source defines their number and order

    /// Whether all files named in the pointers file are read.
    [[nodiscard]] bool wantsAllPointed() const;
};

/// The map in a data file; the errors are French sentences with the places of all faults.
[[nodiscard]] std::expected<CardMap, QStringList> readCardMap(const QByteArray& json);

/// The same with the first fault only.
[[nodiscard]] std::expected<CardMap, QString> parseCardMap(const QByteArray& json);
