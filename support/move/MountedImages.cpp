#include "support/move/MountedImages.h"

#include "platform/PropertyList.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

// Fields of a line, see proc_pid_mountinfo(5). The last one is counted from the separator "-".
constexpr qsizetype deviceNumberField = 2;
constexpr qsizetype mountPointField = 4;
constexpr qsizetype deviceAfterSeparator = 2;

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Blanks, line ends and backslashes are written as a backslash and three octal digits.
QString unescaped(const QByteArray& field)
{
    QByteArray name;
    for (qsizetype at = 0; at < field.size(); ++at) {
        bool isNumber = false;
        const uint code = field.at(at) == '\\' ? field.mid(at + 1, 3).toUInt(&isNumber, 8) : 0;
        name += isNumber ? static_cast<char>(code) : field.at(at);
        at += isNumber ? 3 : 0;
    }
    return QFile::decodeName(name);
}

bool isRemovable(const QString& blockDevice)
{
    // For a partition, the file is in the folder of its disk, one level above.
    return contentOf(blockDevice + "/removable"_L1).startsWith('1') ||
           contentOf(blockDevice + "/../removable"_L1).startsWith('1');
}

bool isInside(const QString& path, const QString& folder)
{
    return folder == "/"_L1 || path == folder || path.startsWith(folder + u'/');
}

} // namespace

MountedImages MountedImages::ofSystem()
{
    return {contentOf(u"/proc/self/mountinfo"_s), u"/sys/dev/block"_s};
}

MountedImages::MountedImages(const QByteArray& mountInformation, const QString& blockDeviceFolder)
{
    const QList<QByteArray> lines = mountInformation.split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype separator = fields.indexOf("-", mountPointField + 1);
        if (separator < 0 || separator + deviceAfterSeparator >= fields.size())
            continue;
        const QString device = unescaped(fields.at(separator + deviceAfterSeparator));
        const QString number = QString::fromLatin1(fields.at(deviceNumberField));
        const bool isImage = device.startsWith("/dev/loop"_L1) ||
                             (device.startsWith("/dev/"_L1) && isRemovable(blockDeviceFolder + u'/' + number));
        m_mounts.append({unescaped(fields.at(mountPointField)), device, isImage});
    }
}

std::optional<MountedImages::Volume> MountedImages::volumeOf(const QString& folder) const
{
    if (!QFileInfo(folder).isDir())
        return std::nullopt;
    const Mount* nearest = nullptr;
    for (const Mount& mount : m_mounts) {
        // A later mount at the same place hides the earlier one.
        if (isInside(folder, mount.mountPoint) &&
            (nearest == nullptr || mount.mountPoint.size() >= nearest->mountPoint.size()))
            nearest = &mount;
    }
    if (nearest == nullptr)
        return std::nullopt;
    return Volume{nearest->mountPoint == "/"_L1, nearest->device};
}

QByteArray MountedImages::propertyList() const
{
    QVariantList images;
    for (const Mount& mount : m_mounts) {
        if (!mount.isImage)
            continue;
        const QVariantMap entity{{u"dev-entry"_s, mount.device}, {u"mount-point"_s, mount.mountPoint}};
        images.append(QVariantMap{{u"system-entities"_s, QVariantList{entity}}});
    }
    return writePropertyList(QVariantMap{{u"images"_s, images}}).value_or(QByteArray());
}
