#include "service/embedded/CardDecoder.h"

#include "service/embedded/CardElements.h"
#include "service/embedded/CardFileList.h"
#include "service/embedded/CardForms.h"

#include <algorithm>
#include <set>

using namespace Qt::StringLiterals;

namespace {

std::unexpected<CardGap> damage(const QString& explanation)
{
    return std::unexpected(CardGap{CardGap::Kind::Damaged, explanation, {}});
}

/// The files, by name, whose content becomes elements.
std::set<QString> decodedFiles(const CardMap& map)
{
    std::set<QString> names;
    for (const CardValue& value : map.values)
        names.insert(value.file);
    for (const CardRecordSource& source : map.beneficiaries)
        names.insert(source.file);
    return names;
}

const TlvObject* firstObject(const std::vector<TlvObject>& objects, const TagPath& path)
{
    const std::vector<const TlvObject*> found = findTlv(objects, path);
    return found.empty() ? nullptr : found.front();
}

/// Whether the value is what the place holds before anybody writes to it.
bool isUnwritten(const QString& path, const QString& text)
{
    const auto isZero = [](QChar c) { return c == u'0'; };
    const auto* element = std::ranges::find(CardElements::beneficiaryElements, path, &CardElement::path);
    return element != CardElements::beneficiaryElements.end() && element->zerosAreNothing &&
           std::ranges::all_of(text, isZero);
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
        if (Result parsed = decoder.parseNamed(file.name, found->second); !parsed)
            return std::unexpected(std::move(parsed.error()));
    }
    if (!map.wantsAllPointed())
        return decoder;
    std::set<CardFileId> known; // two names may point to one file
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
    const Records beneficiaries = list == nullptr ? Records() : findTlv(*list, first.record);
    if (beneficiaries.size() > CardElements::mostBeneficiaries)
        return damage(u"plus de %1 bénéficiaires"_s.arg(CardElements::mostBeneficiaries));
    for (const TlvObject* beneficiary : beneficiaries) {
        CardTree& element = document.append(CardElements::beneficiary);
        for (const CardRecordSource& source : m_map->beneficiaries) {
            const TlvObject* record = &source == &first ? beneficiary : linkedRecord(source, *beneficiary);
            if (Result added = record == nullptr ? Result() : addRecord(element, source, *record); !added)
                return std::unexpected(std::move(added.error()));
        }
    }
    return document;
}

bool CardDecoder::knowsBeneficiaries() const
{
    const QString& file = m_map->beneficiaries.front().file;
    return !file.isEmpty() && objects(file) != nullptr;
}

CardDecoder::Result CardDecoder::parseNamed(const QString& name, QByteArrayView bytes)
{
    auto objects = parseTlv(bytes);
    if (!objects)
        return damage(u"fichier « %1 » : %2"_s.arg(name, describeTlvFault(objects.error())));
    m_named.emplace(name, *std::move(objects));
    return {};
}

CardDecoder::Result CardDecoder::parsePointed(const CardFileId& id, QByteArrayView bytes)
{
    auto objects = parseTlv(bytes);
    if (objects) {
        std::ranges::move(*objects, std::back_inserter(m_pointed));
        return {};
    }
    // Files of other forms are among them, pictures or keys: only one that begins as a record does should be sound.
    const std::optional<quint32> tag = leadingTlvTag(bytes);
    const auto beginsSo = [&tag](const CardRecordSource& source) {
        return source.file.isEmpty() && source.record.front() == tag;
    };
    if (std::ranges::none_of(m_map->beneficiaries, beginsSo))
        return {};
    return damage(u"fichier %1 : %2"_s.arg(u"%1"_s.arg(id.file, 4, 16, QLatin1Char('0')).toUpper(),
                                           describeTlvFault(objects.error())));
}

const CardDecoder::Objects* CardDecoder::objects(const QString& name) const
{
    if (name.isEmpty())
        return &m_pointed;
    const auto found = m_named.find(name);
    return found == m_named.end() ? nullptr : &found->second;
}

const TlvObject* CardDecoder::linkedRecord(const CardRecordSource& source, const TlvObject& beneficiary) const
{
    const Objects* file = objects(source.file);
    if (file == nullptr)
        return nullptr;
    if (!source.link)
        return firstObject(*file, source.record);
    const TlvObject* wanted = firstObject(beneficiary.children, source.link->beneficiary);
    if (wanted == nullptr)
        return nullptr;
    const auto isLinked = [&source, wanted](const TlvObject* record) {
        const TlvObject* own = firstObject(record->children, source.link->own);
        return own != nullptr && own->value == wanted->value;
    };
    const Records records = findTlv(*file, source.record);
    const auto found = std::ranges::find_if(records, isLinked);
    return found == records.end() ? nullptr : *found;
}

CardDecoder::Result CardDecoder::addField(CardTree& element, const CardField& field, const Objects& objects)
{
    const TlvObject* object = firstObject(objects, field.tags);
    // Of several places for one element, the first that holds something counts.
    if (object == nullptr || !element.textAt(field.path).isEmpty())
        return {};
    const std::optional<QString> text = cardText(field.form, object->value);
    if (!text)
        return damage(u"le champ « %1 » n’est pas de la forme attendue"_s.arg(field.path));
    if (!text->isEmpty() && !isUnwritten(field.path, *text))
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
