#pragma once

#include "service/embedded/CardLinks.h"
#include "service/embedded/CardMap.h"
#include "service/embedded/CardTree.h"
#include "service/embedded/Tlv.h"

/// The data objects of a card, read once, and the elements that a map makes of them. The map and the content, whose
/// bytes the objects are views of, outlive it.
class CardDecoder
{
public:
    /// The error is damaged content.
    [[nodiscard]] static std::expected<CardDecoder, CardGap> parse(const CardMap& map, const CardContent& content);

    /// The elements of the card's document, whether or not they suffice for anything. The error is damaged content.
    [[nodiscard]] std::expected<CardTree, CardGap> document() const;

    /// Whether a card without beneficiaries has none: the file that lists them is known, and was read.
    [[nodiscard]] bool knowsBeneficiaries() const;

private:
    using Objects = std::vector<TlvObject>;
    using Result = std::expected<void, CardGap>;

    explicit CardDecoder(const CardMap& map)
        : m_map(&map)
    {
    }

    [[nodiscard]] Result parseNamed(const CardFile& file, QByteArrayView bytes);
    [[nodiscard]] Result parsePointed(const CardFileId& id, QByteArrayView bytes);
    /// The objects of a file, those of all pointed files for no name; nothing for a file that the card refused.
    [[nodiscard]] const Objects* objects(const QString& name) const;
    /// The record of each beneficiary in a source; null where there is none.
    [[nodiscard]] std::expected<CardRecords, CardGap> recordsOf(const CardRecordSource& source,
                                                                const CardRecords& beneficiaries) const;
    [[nodiscard]] Result addBeneficiaries(CardTree& document, const CardRecords& beneficiaries) const;
    [[nodiscard]] static Result addField(CardTree& element, const CardField& field, const Objects& objects);
    [[nodiscard]] static Result addRecord(CardTree& element, const CardRecordSource& source, const TlvObject& record);

    const CardMap* m_map;
    std::map<QString, Objects> m_named;
    Objects m_pointed;
};
