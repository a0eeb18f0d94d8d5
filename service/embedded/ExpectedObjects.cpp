#include "service/embedded/ExpectedObjects.h"

#include <algorithm>

namespace {

TagPath joined(TagPath path, const TagPath& more)
{
    path.insert(path.end(), more.begin(), more.end());
    return path;
}

void addSource(std::vector<TagPath>& paths, const CardRecordSource& source)
{
    paths.push_back(source.record);
    for (const CardField& field : source.fields)
        paths.push_back(joined(source.record, field.tags));
    if (source.link)
        paths.push_back(joined(source.record, source.link->own));
    for (const CardSublist& list : source.lists) {
        const TagPath record = joined(source.record, list.record);
        paths.push_back(record);
        for (const CardField& field : list.fields)
            paths.push_back(joined(record, field.tags));
    }
}

/// The paths of all objects in that file that the map knows.
std::vector<TagPath> knownPaths(const CardMap& map, const CardFile& file)
{
    std::vector<TagPath> paths = file.ignored;
    for (const CardValue& value : map.values) {
        if (value.file == file.name)
            paths.push_back(value.field.tags);
    }
    const CardRecordSource& first = map.beneficiaries.front();
    for (const CardRecordSource& source : map.beneficiaries) {
        if (source.file == file.name)
            addSource(paths, source);
        if (source.link && first.file == file.name)
            paths.push_back(joined(first.record, source.link->beneficiary));
    }
    return paths;
}

/// Whether the path continues the other one.
bool leadsOn(const TagPath& path, const TagPath& start)
{
    return path.size() > start.size() && std::ranges::equal(std::span(path).first(start.size()), start);
}

QString tagsText(const TagPath& path)
{
    QStringList tags;
    for (const quint32 tag : path)
        tags.append(QString::number(tag, 16).toUpper());
    return tags.join(u'/');
}

// The depth is limited by the known paths, which are shorter than deepestTlv.
std::optional<QString> firstUnknown(const std::vector<TlvObject>& objects, const TagPath& above,
                                    const std::vector<TagPath>& known)
{
    for (const TlvObject& object : objects) {
        const TagPath path = joined(above, {object.tag});
        const auto goesOn = [&path](const TagPath& other) { return leadsOn(other, path); };
        if (std::ranges::any_of(known, goesOn)) {
            if (std::optional<QString> unknown = firstUnknown(object.children, path, known))
                return unknown;
        } else if (std::ranges::find(known, path) == known.end()) {
            return tagsText(path);
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<QString> unexpectedObject(const CardMap& map, const CardFile& file, const std::vector<TlvObject>& objects)
{
    return firstUnknown(objects, {}, knownPaths(map, file));
}
