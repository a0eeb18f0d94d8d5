#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// What is mounted, and which of it is there for a while only: disk images (loop devices) and removable media. A value,
/// taken when it is made. Usable on any thread.
class MountedImages
{
public:
    struct Volume
    {
        bool isRootFileSystem;
        /// What the volume is mounted from, as "/dev/loop0".
        QString device;
    };

    /// What this process sees now.
    [[nodiscard]] static MountedImages ofSystem();

    /// From the text of /proc/self/mountinfo, and the folder of the kernel's block devices (/sys/dev/block).
    MountedImages(const QByteArray& mountInformation, const QString& blockDeviceFolder);

    /// The volume that holds a folder, whose path has no symbolic links; nothing when the folder does not exist.
    [[nodiscard]] std::optional<Volume> volumeOf(const QString& folder) const;

    /// The disk images and removable media as a property list: "images", each with "system-entities", each with its
    /// "dev-entry" and "mount-point".
    [[nodiscard]] QByteArray propertyList() const;

private:
    struct Mount
    {
        QString mountPoint;
        QString device;
        bool isImage;
    };

    // In the order in which they were mounted.
    QList<Mount> m_mounts;
};
