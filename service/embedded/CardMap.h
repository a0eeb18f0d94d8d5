#pragma once

#include "service/embedded/CardContent.h"

#include <expected>
#include <optional>
#include <vector>

// A card map says where the content of one kind of card lies, and what becomes of it. It is a data file;
// docs/card-data.md describes its form. The library reads firstCardFiles, then otherCardFiles (CardFileList.h), then
// those of the identity once more; cardDocument (CardDocument.h) makes the card's XML of what was read.

/// The tags that lead to a value, from the outermost; a tag is the number that its bytes make (0x65, 0x5F37).
using TagPath = std::vector<quint32>;

/// How the bytes of a value become the text of an element.
enum class CardForm
{
    Text,         // ISO 8859-1; blanks and null bytes at its end are no part of it
    Utf8,         // the same in UTF-8
    Digits,       // ASCII digits, zeros in front kept
    PackedDigits, // two digits a byte, filled up with F
    Number,       // a social-security number of 13 characters, or of 15 with its key, which is added when it lacks
    Date,         // eight ASCII digits YYYYMMDD, given as ddMMyyyy
    ShortDate,    // the same, given as yyMMdd
    Hexadecimal   // two capital digits a byte
};

/// A value of a record: where its bytes stand in the record, which element it becomes, in which form.
struct CardField
{
    QString path; // elements, from the one that the record becomes: "ident/nomUsuel"
    TagPath tags;
    CardForm form = CardForm::Text;
};

/// Records within a record, each of which becomes an element.
struct CardSublist
{
    QString path;
    TagPath record;
    std::vector<CardField> fields;
};

/// How the record of one file that belongs to a beneficiary's record in another is found: by the same bytes in both.
struct CardLink
{
    TagPath own;
    TagPath beneficiary;
};

/// Records of one file, and what they say about beneficiaries.
struct CardRecordSource
{
    QString file; // name of one of the map's files; empty: all those that the pointers file names
    TagPath record;
    std::optional<CardLink> link; // none for the first source; for another: its first record holds for everyone
    std::vector<CardField> fields;
    std::vector<CardSublist> lists;
};

/// A value that the card holds once.
struct CardValue
{
    QString file; // name of one of the map's files
    CardField field;
};

/// Where a file of the map is found: by its identifier, or by its name in the pointers file.
struct CardFile
{
    QString name; // by which the rest of the map speaks of it
    std::optional<CardFileId> id;
    QByteArray pointer;           // empty for a file with an identifier
    bool required = true;         // the card is of no use when it refuses this file
    std::vector<TagPath> ignored; // objects in it that no field is made of; others that are not known are damage

    friend bool operator==(const CardFile&, const CardFile&) = default;
};

/// One kind of card.
struct CardMap
{
    QString name;           // for people, in French
    QString version;        // for people
    QByteArray application; // the card is of this kind when this application can be selected
    std::vector<CardFile> files;
    /// Files read first and last: the same bytes, or the same refusals, tell that the card is still the same one. At
    /// least one must be readable.
    std::vector<CardFileId> identity;
    std::optional<CardFileId> pointers; // the file that names others
    std::vector<CardValue> values;
    std::vector<CardRecordSource> beneficiaries; // the first source tells how many there are, and their order

    /// Whether every file that the pointers file names is wanted, as far as the card gives it.
    [[nodiscard]] bool wantsAllPointed() const;
};

/// The map that a data file holds, or why there is none: a sentence in French that names the place.
[[nodiscard]] std::expected<CardMap, QString> parseCardMap(const QByteArray& json);
