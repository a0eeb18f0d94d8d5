#include "service/embedded/CardMap.h"

#include "service/embedded/CardElements.h"
#include "service/embedded/MapReader.h"

#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int knownFormat = 1;
constexpr qsizetype longestPointer = 8;

/// The file with that name; refused and null when there is none.
const CardFile* knownFile(const CardMap& map, const QString& name, const MapReader& reader, QLatin1StringView key)
{
    const auto found = std::ranges::find(map.files, name, &CardFile::name);
    if (found != map.files.cend())
        return &*found;
    reader.refuse(key, u"fichier inconnu « %1 »"_s.arg(name));
    return nullptr;
}

CardFile readFile(const MapReader::Element& element, QStringList& faults)
{
    const MapReader reader(element.value, element.place,
                           {"name"_L1, "application"_L1, "file"_L1, "pointer"_L1, "required"_L1, "ignored"_L1}, faults);
    CardFile file{reader.text("name"_L1), {}, {}, reader.flag("required"_L1, true), reader.tagPaths("ignored"_L1)};
    if (!reader.has("pointer"_L1)) {
        file.id = CardFileId{reader.application("application"_L1), reader.fileNumber("file"_L1)};
        return file;
    }
    if (reader.has("application"_L1) || reader.has("file"_L1))
        reader.refuse("pointer"_L1, u"« application » et « file » sont de trop"_s);
    const QString pointer = reader.text("pointer"_L1);
    const auto isPrintable = [](QChar c) { return c >= u' ' && c <= u'~'; };
    if (pointer.size() > longestPointer || !std::ranges::all_of(pointer, isPrintable))
        reader.refuse("pointer"_L1, u"1 à %1 caractères ASCII sont attendus"_s.arg(longestPointer));
    file.pointer = pointer.toLatin1();
    return file;
}

void readFiles(const MapReader& reader, CardMap& map, QStringList& faults)
{
    if (!reader.has("files"_L1))
        reader.refuse("files"_L1, u"un tableau qui n’est pas vide est attendu"_s);
    for (const MapReader::Element& element : reader.elements("files"_L1)) {
        const qsizetype faultsBefore = faults.size();
        CardFile file = readFile(element, faults);
        const bool isSound = faults.size() == faultsBefore;
        const auto sameName = [&file](const CardFile& other) { return other.name == file.name; };
        const auto samePlace = [&file](const CardFile& other) {
            return other.id == file.id && other.pointer == file.pointer;
        };
        if (isSound && (std::ranges::any_of(map.files, sameName) || std::ranges::any_of(map.files, samePlace)))
            reader.refuse("files"_L1, u"fichier « %1 » en double"_s.arg(file.name));
        map.files.push_back(std::move(file));
    }
}

/// The identifier of a file, which must not depend on the pointers file.
std::optional<CardFileId> listedFile(const CardMap& map, const QString& name, const MapReader& reader,
                                     QLatin1StringView key)
{
    const CardFile* file = knownFile(map, name, reader, key);
    if (file != nullptr && !file->id)
        reader.refuse(key, u"« %1 » n’a pas d’identifiant"_s.arg(name));
    return file == nullptr ? std::nullopt : file->id;
}

void readIdentity(const MapReader& reader, CardMap& map)
{
    if (!reader.has("identity"_L1))
        reader.refuse("identity"_L1, u"un tableau qui n’est pas vide est attendu"_s);
    for (const MapReader::Element& element : reader.elements("identity"_L1)) {
        if (const auto id = listedFile(map, element.value.toString(), reader, "identity"_L1))
            map.identity.push_back(*id);
    }
}

void readPointers(const MapReader& reader, CardMap& map)
{
    if (reader.has("pointers"_L1)) {
        if (const QString name = reader.text("pointers"_L1); !name.isEmpty())
            map.pointers = listedFile(map, name, reader, "pointers"_L1);
        return;
    }
    const bool needsPointers = std::ranges::any_of(map.files, [](const CardFile& file) { return !file.id; });
    if (needsPointers)
        reader.refuse("pointers"_L1, u"le fichier des pointeurs manque"_s);
}

template <typename Known>
CardField readField(const MapReader& reader, const Known& isKnown)
{
    CardField field{reader.text("path"_L1), reader.tags("tag"_L1), reader.form("form"_L1)};
    if (!field.path.isEmpty() && !isKnown(field.path))
        reader.refuse("path"_L1, u"élément inconnu « %1 »"_s.arg(field.path));
    return field;
}

template <typename Known>
std::vector<CardField> readFields(const MapReader& parent, const Known& isKnown, QStringList& faults)
{
    std::vector<CardField> fields;
    for (const MapReader::Element& element : parent.elements("fields"_L1)) {
        const MapReader reader(element.value, element.place, {"path"_L1, "tag"_L1, "form"_L1}, faults);
        fields.push_back(readField(reader, isKnown));
    }
    return fields;
}

void readValues(const MapReader& parent, CardMap& map, QStringList& faults)
{
    for (const MapReader::Element& element : parent.elements("values"_L1)) {
        const MapReader reader(element.value, element.place, {"file"_L1, "path"_L1, "tag"_L1, "form"_L1}, faults);
        const QString file = reader.text("file"_L1);
        if (!file.isEmpty())
            static_cast<void>(knownFile(map, file, reader, "file"_L1));
        const auto isKnown = [](const QString& path) { return path == CardElements::serial; };
        map.values.push_back({file, readField(reader, isKnown)});
    }
}

CardSublist readSublist(const MapReader::Element& element, QStringList& faults)
{
    const MapReader reader(element.value, element.place, {"path"_L1, "record"_L1, "fields"_L1}, faults);
    CardSublist list{reader.text("path"_L1), reader.recordTags("record"_L1), {}};
    if (list.path != CardElements::period)
        reader.refuse("path"_L1, u"élément inconnu « %1 »"_s.arg(list.path));
    const auto isPart = [](const QString& path) {
        return std::ranges::find(CardElements::periodParts, path) != CardElements::periodParts.end();
    };
    list.fields = readFields(reader, isPart, faults);
    return list;
}

CardRecordSource readSource(const MapReader::Element& element, const CardMap& map, QStringList& faults)
{
    const MapReader reader(element.value, element.place, {"file"_L1, "record"_L1, "link"_L1, "fields"_L1, "lists"_L1},
                           faults);
    CardRecordSource source;
    if (reader.has("file"_L1)) {
        source.file = reader.text("file"_L1);
        if (!source.file.isEmpty())
            static_cast<void>(knownFile(map, source.file, reader, "file"_L1));
    } else if (!map.pointers) {
        reader.refuse("file"_L1, u"sans fichier des pointeurs, un fichier est attendu"_s);
    }
    source.record = reader.recordTags("record"_L1);
    if (reader.has("link"_L1)) {
        const MapReader::Element link = reader.element("link"_L1);
        const MapReader linkReader(link.value, link.place, {"own"_L1, "beneficiary"_L1}, faults);
        source.link = CardLink{linkReader.tags("own"_L1), linkReader.tags("beneficiary"_L1)};
        if (map.beneficiaries.empty())
            reader.refuse("link"_L1, u"la première source n’a pas de lien"_s);
    }
    const auto isElement = [](const QString& path) {
        return std::ranges::find(CardElements::beneficiaryElements, path, &CardElement::path) !=
               CardElements::beneficiaryElements.end();
    };
    source.fields = readFields(reader, isElement, faults);
    for (const MapReader::Element& list : reader.elements("lists"_L1))
        source.lists.push_back(readSublist(list, faults));
    return source;
}

void readBeneficiaries(const MapReader& reader, CardMap& map, QStringList& faults)
{
    if (!reader.has("beneficiaries"_L1))
        reader.refuse("beneficiaries"_L1, u"un tableau qui n’est pas vide est attendu"_s);
    for (const MapReader::Element& element : reader.elements("beneficiaries"_L1))
        map.beneficiaries.push_back(readSource(element, map, faults));
}

} // namespace

bool CardMap::wantsAllPointed() const
{
    return std::ranges::any_of(beneficiaries, &QString::isEmpty, &CardRecordSource::file);
}

std::expected<CardMap, QStringList> readCardMap(const QByteArray& json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        return std::unexpected(
            QStringList(u"ce n’est pas du JSON (octet %1 : %2)"_s.arg(error.offset).arg(error.errorString())));

    QStringList faults;
    const MapReader reader(document.isObject() ? QJsonValue(document.object()) : QJsonValue(), {},
                           {"format"_L1, "name"_L1, "version"_L1, "remarks"_L1, "application"_L1, "identity"_L1,
                            "pointers"_L1, "files"_L1, "values"_L1, "beneficiaries"_L1},
                           faults);
    if (reader.element("format"_L1).value != QJsonValue(knownFormat))
        reader.refuse("format"_L1, u"%1 est attendu"_s.arg(knownFormat));
    CardMap map;
    map.name = reader.text("name"_L1);
    map.version = reader.text("version"_L1);
    map.application = reader.application("application"_L1);
    readFiles(reader, map, faults);
    readIdentity(reader, map);
    readPointers(reader, map);
    readValues(reader, map, faults);
    readBeneficiaries(reader, map, faults);
    if (!faults.isEmpty())
        return std::unexpected(faults);
    return map;
}

std::expected<CardMap, QString> parseCardMap(const QByteArray& json)
{
    std::expected<CardMap, QStringList> map = readCardMap(json);
    if (!map)
        return std::unexpected(map.error().first());
    return *std::move(map);
}
