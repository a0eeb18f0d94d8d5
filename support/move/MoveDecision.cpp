#include "support/move/MoveDecision.h"

#include "platform/PropertyList.h"

#include <QFileInfo>
#include <QVariantMap>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString parentOf(const QString& path)
{
    return QFileInfo(path).path();
}

QStringList componentsOf(const QString& path)
{
    return path.split(u'/', Qt::SkipEmptyParts);
}

bool isInApplicationsFolder(const MoveSurroundings& surroundings)
{
    const QString& path = surroundings.bundlePath;
    return std::ranges::any_of(surroundings.applicationsFolders,
                               [&path](const QString& folder) { return path.startsWith(folder); }) ||
           componentsOf(path).contains("Applications"_L1);
}

// Whether an image in the list is mounted from the device. A value of the wrong type ends the search.
bool isDeviceOfImage(const QVariant& list, const QString& device)
{
    if (list.typeId() != QMetaType::QVariantMap)
        return false;
    const QVariant images = list.toMap().value(u"images"_s);
    if (images.typeId() != QMetaType::QVariantList)
        return false;
    const QVariantList allImages = images.toList();
    for (const QVariant& image : allImages) {
        if (image.typeId() != QMetaType::QVariantMap)
            return false;
        const QVariant entities = image.toMap().value(u"system-entities"_s);
        if (entities.typeId() != QMetaType::QVariantList)
            return false;
        const QVariantList allEntities = entities.toList();
        for (const QVariant& entity : allEntities) {
            if (entity.typeId() != QMetaType::QVariantMap)
                return false;
            const QVariant entry = entity.toMap().value(u"dev-entry"_s);
            if (entry.typeId() != QMetaType::QString)
                return false;
            if (entry.toString() == device)
                return true;
        }
    }
    return false;
}

std::optional<QString> diskImageDeviceOf(const QString& folder, MoveOperations& operations)
{
    const std::optional<MoveOperations::Volume> volume = operations.volumeOf(folder);
    if (!volume || volume->isRootFileSystem)
        return std::nullopt;
    const std::optional<QVariant> list = parsePropertyList(operations.mountedImages());
    if (!list || !isDeviceOfImage(*list, volume->device))
        return std::nullopt;
    return volume->device;
}

struct InstallFolder
{
    QString path;
    bool isUserFolder;
};

std::optional<InstallFolder> installFolderOf(const MoveSurroundings& surroundings, MoveOperations& operations)
{
    const QString& own = surroundings.userApplicationsFolder;
    const MoveOperations::ItemFacts facts = operations.factsOf(own);
    if (facts.exists && facts.isFolder && std::ranges::any_of(operations.entriesOf(own), hasApplicationExtension))
        return InstallFolder{operations.resolvingSymbolicLinks(own), true};
    if (surroundings.localApplicationsFolders.isEmpty())
        return std::nullopt;
    return InstallFolder{operations.resolvingSymbolicLinks(surroundings.localApplicationsFolders.last()), false};
}

} // namespace

bool hasApplicationExtension(QStringView name)
{
    // ".app" alone has no extension.
    return name.endsWith(".app"_L1) && name.size() > 4;
}

std::optional<MoveDecision> decideMove(const MoveSurroundings& surroundings, MoveOperations& operations)
{
    if (operations.isQuestionSuppressed())
        return std::nullopt;

    MoveDecision decision;
    const QString parent = parentOf(surroundings.bundlePath);
    decision.isNested = std::ranges::any_of(componentsOf(parent), hasApplicationExtension);
    if (!decision.isNested && isInApplicationsFolder(surroundings))
        return std::nullopt;

    decision.diskImageDevice = diskImageDeviceOf(parent, operations);

    const std::optional<InstallFolder> folder = installFolderOf(surroundings, operations);
    if (!folder)
        return std::nullopt;
    decision.installFolder = folder->path;
    decision.isUserFolder = folder->isUserFolder;

    decision.destinationPath = folder->path + u'/' + QFileInfo(surroundings.bundlePath).fileName();
    decision.needsAuthorization = !operations.factsOf(folder->path).isWritable;
    if (!decision.needsAuthorization) {
        const MoveOperations::ItemFacts facts = operations.factsOf(decision.destinationPath);
        decision.needsAuthorization = facts.exists && !facts.isWritable;
    }
    return decision;
}
