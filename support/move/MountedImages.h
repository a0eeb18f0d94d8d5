#pragma once

#include "support/move/MoveOperations.h"

#include <QList>

#include <optional>

/// The mounted volumes, and which of them are disk images (loop devices) or removable media, as they were when the
/// object was made. Any thread.
class MountedImages
{
public:
    using Volume = MoveOperations::Volume;

    [[nodiscard]] static MountedImages ofSystem();

    /// From the text of /proc/self/mountinfo, and the folder of the kernel's block devices (/sys/dev/block).
    MountedImages(const QByteArray& mountInformation, const QString& blockDeviceFolder);

    /// The volume of a folder, whose path has no symbolic links; absent when the folder does not exist.
    [[nodiscard]] std::optional<Volume> volumeOf(const QString& folder) const;

    /// The disk images and removable media as a property list: "images", each with "system-entities", each with
    /// "dev-entry" and "mount-point".
    [[nodiscard]] QByteArray propertyList() const;

private:
    struct Mount
    {
        QString mountPoint;
        QString device;
        bool isImage;
    };

    // In the order of mounting.
    QList<Mount> m_mounts;
};
