#include "service/embedded/PointersFile.h"

#include "service/embedded/Tlv.h"

#include <QtEndian>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

// E0 { A0 { 82 { entry, two bytes of unknown meaning, name of the application } … }, 80 { name, entry, file } … }
constexpr quint32 directoryTag = 0xE0;
constexpr quint32 applicationsTag = 0xA0;
constexpr quint32 applicationTag = 0x82;
constexpr quint32 fileTag = 0x80;
constexpr qsizetype entrySize = 2;
constexpr qsizetype applicationOffset = 4;
constexpr qsizetype longestApplication = 16;
constexpr qsizetype nameSize = 8;
constexpr qsizetype fileNumberSize = 2;

using Applications = std::map<QByteArray, QByteArray>; // names by entry

std::optional<Applications> readApplications(const TlvObject& directory)
{
    Applications applications;
    for (const TlvObject& list : directory.children) {
        if (list.tag != applicationsTag)
            continue;
        for (const TlvObject& object : list.children) {
            if (object.tag != applicationTag)
                continue;
            const qsizetype size = object.value.size() - applicationOffset;
            if (size <= 0 || size > longestApplication)
                return std::nullopt;
            applications.emplace(object.value.first(entrySize).toByteArray(),
                                 object.value.sliced(applicationOffset).toByteArray());
        }
    }
    return applications;
}

} // namespace

std::expected<std::vector<PointedFile>, QString> parsePointersFile(QByteArrayView bytes)
{
    const auto objects = parseTlv(bytes);
    if (!objects)
        return std::unexpected(describeTlvFault(objects.error()));
    std::vector<PointedFile> files;
    bool hasDirectory = false;
    for (const TlvObject& directory : *objects) {
        if (directory.tag != directoryTag)
            continue;
        hasDirectory = true;
        const std::optional<Applications> applications = readApplications(directory);
        if (!applications)
            return std::unexpected(u"application mal nommée"_s);
        for (const TlvObject& object : directory.children) {
            if (object.tag != fileTag)
                continue;
            if (object.value.size() != nameSize + entrySize + fileNumberSize)
                return std::unexpected(u"fichier mal désigné"_s);
            const auto found = applications->find(object.value.sliced(nameSize, entrySize).toByteArray());
            if (found == applications->end())
                return std::unexpected(u"fichier d’une application sans nom"_s);
            files.push_back({object.value.first(nameSize).trimmed().toByteArray(),
                             {found->second, qFromBigEndian<quint16>(object.value.last(fileNumberSize).data())}});
        }
    }
    if (!hasDirectory)
        return std::unexpected(u"répertoire absent"_s);
    return files;
}
