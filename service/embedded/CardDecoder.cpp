#include "service/embedded/CardDecoder.h"

#include "service/embedded/CardElements.h"
#include "service/embedded/CardFileList.h"
#include "service/embedded/CardForms.h"
#include "service/embedded/ExpectedObjects.h"

#include <algorithm>
#include <set>

using namespace Qt::StringLiterals;

namespace {

std::unexpected<CardGap> damagedContent(const QString& explanation)
{
    return std::unexpected(CardGap{CardGap::Kind::Damaged, explanation, {}});
}

/// Names of the files whose content is used.
std::set<QString> decodedFiles(const CardMap& map)
{
    std::set<QString> names;
    for (const CardValue& value : map.values)
        names.insert(value.file);
    for (const CardRecordSource& source : map.beneficiaries)
        names.insert(source.file);
    return names;
}

const CardElement* elementAt(const QString& path)
{
    const auto* element = std::ranges::find(CardElements::beneficiaryElements, path, &CardElement::path);
    return element == CardElements::beneficiaryElements.end() ? nullptr : element;
}

/// Whether the value is that of an unwritten card.
bool isUnwritten(const CardElement& element, const QString& text)
{
    return element.zerosAreNothing && std::ranges::all_of(text, [](QChar c) { return c == u'0'; });
}

bool hasShape(const CardShape& shape, const QString& text)
{
    return text.size() >= shape.shortest && text.size() <= shape.longest &&
           (shape.characters.isEmpty() ||
            std::ranges::all_of(text, [&shape](QChar c) { return shape.characters.contains(c); }));
}

enum class BirthDate
{
    Whole,
    Incomplete, // day, month or year are unknown
    Impossible
};

BirthDate judgeBirthDate(const QString& path, const QString& text)
{
    constexpr qsizetype shortDigits = 6;
    constexpr int century = 2000;
    const bool isShort = path == CardElements::shortBirthDate;
    // Trailing blanks were removed from it.
    if (isShort && text.size() < shortDigits)
        return BirthDate::Incomplete;
    const int first = text.first(2).toInt();
    const int month = text.sliced(2, 2).toInt();
    const int last = text.sliced(4).toInt();
    // A two-digit year may be of either century; only February 1900 differs from 2000.
    const int year = isShort ? century + first : last;
    const int day = isShort ? last : first;
    if (!isPossibleDate(year, month, day))
        return BirthDate::Impossible;
    return year == 0 || month == 0 || day == 0 ? BirthDate::Incomplete : BirthDate::Whole;
}

} // namespace

std::expected<CardDecoder, CardGap> CardDecoder::parse(const CardMap& map, const CardContent& content)
{
    const auto pointed = pointedCardFiles(map, content);
    if (!pointed)
        return std::unexpected(pointed.error());
    CardDecoder decoder(map);
    const std::set<QString> names = decodedFiles(map);
    for (const CardFile& file : map.files) {
        const std::optional<CardFileId> id = cardFileId(file, *pointed);
        const auto found = id ? content.find(*id) : content.end();
        if (found == content.end() || !names.contains(file.name))
            continue;
        if (Result parsed = decoder.parseNamed(file, found->second); !parsed)
            return std::unexpected(std::move(parsed.error()));
    }
    if (!map.wantsAllPointed())
        return decoder;
    std::set<CardFileId> known; // several names may point to one file
    for (const PointedFile& file : *pointed) {
        const auto found = content.find(file.id);
        if (found == content.end() || !known.insert(file.id).second)
            continue;
        if (Result parsed = decoder.parsePointed(file.id, found->second); !parsed)
            return std::unexpected(std::move(parsed.error()));
    }
    return decoder;
}

std::expected<CardTree, CardGap> CardDecoder::document() const
{
    CardTree document(CardElements::document);
    for (const CardValue& value : m_map->values) {
        const Objects* file = objects(value.file);
        if (Result added = file == nullptr ? Result() : addField(document, value.field, *file); !added)
            return std::unexpected(std::move(added.error()));
    }
    const CardRecordSource& first = m_map->beneficiaries.front();
    const Objects* list = objects(first.file);
    const CardRecords beneficiaries = list == nullptr ? CardRecords() : findTlv(*list, first.record);
    if (beneficiaries.size() > CardElements::mostBeneficiaries)
        return damagedContent(u"plus de %1 bénéficiaires"_s.arg(CardElements::mostBeneficiaries));
    if (Result added = addBeneficiaries(document, beneficiaries); !added)
        return std::unexpected(std::move(added.error()));
    return document;
}

CardDecoder::Result CardDecoder::addBeneficiaries(CardTree& document, const CardRecords& beneficiaries) const
{
    std::vector<CardRecords> records;
    for (const CardRecordSource& source : m_map->beneficiaries) {
        std::expected<CardRecords, CardGap> found = recordsOf(source, beneficiaries);
        if (!found)
            return std::unexpected(std::move(found.error()));
        records.push_back(*std::move(found));
    }
    for (std::size_t number = 0; number < beneficiaries.size(); ++number) {
        CardTree& element = document.append(CardElements::beneficiary);
        for (std::size_t source = 0; source < records.size(); ++source) {
            const TlvObject* record = records[source][number];
            if (record == nullptr)
                continue;
            if (Result added = addRecord(element, m_map->beneficiaries[source], *record); !added)
                return damagedContent(u"bénéficiaire %1 : %2"_s.arg(number + 1).arg(added.error().explanation));
        }
    }
    return {};
}

std::expected<CardRecords, CardGap> CardDecoder::recordsOf(const CardRecordSource& source,
                                                           const CardRecords& beneficiaries) const
{
    if (&source == &m_map->beneficiaries.front())
        return beneficiaries;
    const Objects* file = objects(source.file);
    const CardRecords records = file == nullptr ? CardRecords() : findTlv(*file, source.record);
    if (!source.link)
        return CardRecords(beneficiaries.size(), records.empty() ? nullptr : records.front());
    std::expected<CardRecords, QString> linked = linkedRecords(source, records, beneficiaries);
    if (linked)
        return *std::move(linked);
    const QString place = source.file.isEmpty() ? u"fichiers désignés"_s : u"fichier « %1 »"_s.arg(source.file);
    return damagedContent(u"%1, %2"_s.arg(place, linked.error()));
}

bool CardDecoder::knowsBeneficiaries() const
{
    const QString& file = m_map->beneficiaries.front().file;
    return !file.isEmpty() && objects(file) != nullptr;
}

CardDecoder::Result CardDecoder::parseNamed(const CardFile& file, QByteArrayView bytes)
{
    auto objects = parseTlv(bytes);
    if (!objects)
        return damagedContent(u"fichier « %1 » : %2"_s.arg(file.name, describeTlvFault(objects.error())));
    const bool isOfRecords =
        std::ranges::find(m_map->beneficiaries, file.name, &CardRecordSource::file) != m_map->beneficiaries.end();
    // A file without records is filled with erased bytes. A file without any bytes was not read.
    if (isOfRecords && file.required && bytes.isEmpty())
        return damagedContent(u"fichier « %1 » : vide"_s.arg(file.name));
    if (const std::optional<QString> tags = isOfRecords ? unexpectedObject(*m_map, file, *objects) : std::nullopt)
        return damagedContent(u"fichier « %1 » : objet inattendu %2"_s.arg(file.name, *tags));
    m_named.emplace(file.name, *std::move(objects));
    return {};
}

CardDecoder::Result CardDecoder::parsePointed(const CardFileId& id, QByteArrayView bytes)
{
    auto objects = parseTlv(bytes);
    if (objects) {
        std::ranges::move(*objects, std::back_inserter(m_pointed));
        return {};
    }
    // Some pointed files are no TLV (pictures, keys). Only a file that starts like a record must be valid.
    const std::optional<quint32> tag = leadingTlvTag(bytes);
    const auto beginsSo = [&tag](const CardRecordSource& source) {
        return source.file.isEmpty() && source.record.front() == tag;
    };
    if (std::ranges::none_of(m_map->beneficiaries, beginsSo))
        return {};
    return damagedContent(u"fichier %1 : %2"_s.arg(cardFileNumber(id), describeTlvFault(objects.error())));
}

const CardDecoder::Objects* CardDecoder::objects(const QString& name) const
{
    if (name.isEmpty())
        return &m_pointed;
    const auto found = m_named.find(name);
    return found == m_named.end() ? nullptr : &found->second;
}

CardDecoder::Result CardDecoder::addField(CardTree& element, const CardField& field, const Objects& objects)
{
    const CardRecords found = findTlv(objects, field.tags);
    if (found.size() > 1)
        return damagedContent(u"le champ « %1 » est là plusieurs fois"_s.arg(field.path));
    // If several places fill one element, the first value is used.
    if (found.empty() || !element.textAt(field.path).isEmpty())
        return {};
    const auto refusal = [&field] {
        return damagedContent(u"le champ « %1 » n’est pas de la forme attendue"_s.arg(field.path));
    };
    const std::optional<QString> text = cardText(field.form, found.front()->value);
    if (!text)
        return refusal();
    const CardElement* known = elementAt(field.path);
    if (text->isEmpty() || (known != nullptr && isUnwritten(*known, *text)))
        return {};
    if (known != nullptr && !hasShape(known->shape, *text))
        return refusal();
    if (field.path == CardElements::birthDate || field.path == CardElements::shortBirthDate) {
        const BirthDate date = judgeBirthDate(field.path, *text);
        if (date == BirthDate::Impossible)
            return refusal();
        // The date exists, but cannot be shown: the element has no text.
        if (date == BirthDate::Incomplete) {
            static_cast<void>(element.at(CardElements::birth));
            return {};
        }
    }
    element.at(field.path).setText(*text);
    return {};
}

CardDecoder::Result CardDecoder::addRecord(CardTree& element, const CardRecordSource& source, const TlvObject& record)
{
    for (const CardField& field : source.fields) {
        if (Result added = addField(element, field, record.children); !added)
            return added;
    }
    for (const CardSublist& list : source.lists) {
        for (const TlvObject* entry : findTlv(record.children, list.record)) {
            CardTree& item = element.append(list.path);
            for (const CardField& field : list.fields) {
                if (Result added = addField(item, field, entry->children); !added)
                    return added;
            }
        }
    }
    return {};
}
