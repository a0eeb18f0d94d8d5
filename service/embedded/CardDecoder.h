#pragma once

#include "service/embedded/CardLinks.h"
#include "service/embedded/CardMap.h"
#include "service/embedded/CardTree.h"
#include "service/embedded/Tlv.h"

/// Makes elements of a card's data objects by a map. Map and content must outlive it.
class CardDecoder
{
public:
    /// The error is damaged content.
    [[nodiscard]] static std::expected<CardDecoder, CardGap> parse(const CardMap& map, const CardContent& content);

    /// The card's document, which may be incomplete. The error is damaged content.
    [[nodiscard]] std::expected<CardTree, CardGap> document() const;

    /// Whether the file that lists the beneficiaries was read: then a card without beneficiaries really has none.
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
    /// The objects of a file, or of all pointed files for an empty name; null for a file that the card refused.
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
