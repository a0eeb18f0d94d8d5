#include "platform/PropertyList.h"
#include "support/move/MountedImages.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QByteArray line(const QByteArray& number, const QByteArray& mountPoint, const QByteArray& device)
{
    return "36 35 " + number + " / " + mountPoint + " rw,noatime master:1 - ext4 " + device + " rw\n";
}

// The devices of all images in the list.
QStringList devicesOf(const MountedImages& images)
{
    QStringList devices;
    const std::optional<QVariant> list = parsePropertyList(images.propertyList());
    const QVariantList entries = list ? list->toMap().value(u"images"_s).toList() : QVariantList();
    for (const QVariant& image : entries) {
        const QVariantList entities = image.toMap().value(u"system-entities"_s).toList();
        for (const QVariant& entity : entities)
            devices.append(entity.toMap().value(u"dev-entry"_s).toString());
    }
    return devices;
}

} // namespace

class tst_MountedImages : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aFolderIsOnTheNearestVolume()
    {
        const QTemporaryDir folder;
        QVERIFY(QDir().mkpath(folder.path() + "/disk/inner"_L1));
        QVERIFY(QDir().mkpath(folder.path() + "/disk2"_L1));
        const QByteArray path = folder.path().toUtf8();
        const MountedImages images(line("8:1", "/", "/dev/sda1") + line("7:0", path + "/disk", "/dev/loop0"),
                                   QString());
        const std::optional<MountedImages::Volume> inner = images.volumeOf(folder.path() + "/disk/inner"_L1);
        QVERIFY(inner && !inner->isRootFileSystem);
        QCOMPARE(inner->device, u"/dev/loop0"_s);
        const std::optional<MountedImages::Volume> itself = images.volumeOf(folder.path() + "/disk"_L1);
        QVERIFY(itself && !itself->isRootFileSystem);
        // A folder whose name begins with the same text.
        const std::optional<MountedImages::Volume> beside = images.volumeOf(folder.path() + "/disk2"_L1);
        QVERIFY(beside && beside->isRootFileSystem);
        QCOMPARE(beside->device, u"/dev/sda1"_s);
    }

    void aLaterMountHidesTheEarlier()
    {
        const QTemporaryDir folder;
        const QByteArray path = folder.path().toUtf8();
        const MountedImages images(line("8:1", "/", "/dev/sda1") + line("7:0", path, "/dev/loop0") +
                                       line("7:1", path, "/dev/loop1"),
                                   QString());
        const std::optional<MountedImages::Volume> volume = images.volumeOf(folder.path());
        QVERIFY(volume);
        QCOMPARE(volume->device, u"/dev/loop1"_s);
    }

    void aMissingFolderIsOnNoVolume()
    {
        const MountedImages images(line("8:1", "/", "/dev/sda1"), QString());
        QVERIFY(!images.volumeOf(u"/pas/de/dossier"_s));
        QVERIFY(!MountedImages(QByteArray(), QString()).volumeOf(u"/"_s));
    }

    void loopDevicesAreImages()
    {
        const MountedImages images(line("8:1", "/", "/dev/sda1") + line("7:3", "/mnt", "/dev/loop3") +
                                       line("259:0", "/mnt2", "/dev/loop4p1") + line("0:21", "/proc", "proc"),
                                   QString());
        QCOMPARE(devicesOf(images), (QStringList{u"/dev/loop3"_s, u"/dev/loop4p1"_s}));
    }

    void removableMediaAreImages()
    {
        const QTemporaryDir folder;
        // As in sysfs: the numbers are links to the devices' folders, and the folder of a partition is in its disk's.
        const QString devices = folder.path() + "/devices"_L1;
        const QString numbers = folder.path() + "/numbers"_L1;
        QVERIFY(QDir().mkpath(numbers));
        QVERIFY(writeFile(devices + "/sda/removable"_L1, "0\n"));
        QVERIFY(writeFile(devices + "/sda/sda1/size"_L1, "8\n"));
        QVERIFY(writeFile(devices + "/sdb/removable"_L1, "1\n"));
        QVERIFY(writeFile(devices + "/sdb/sdb1/size"_L1, "8\n"));
        QVERIFY(QFile::link(devices + "/sda/sda1"_L1, numbers + "/8:1"_L1));
        QVERIFY(QFile::link(devices + "/sdb"_L1, numbers + "/8:16"_L1));
        QVERIFY(QFile::link(devices + "/sdb/sdb1"_L1, numbers + "/8:17"_L1));
        const MountedImages images(line("8:1", "/", "/dev/sda1") + line("8:16", "/a", "/dev/sdb") +
                                       line("8:17", "/b", "/dev/sdb1") + line("8:99", "/c", "/dev/sdz"),
                                   numbers);
        QCOMPARE(devicesOf(images), (QStringList{u"/dev/sdb"_s, u"/dev/sdb1"_s}));
    }

    void namesMayHaveAnyCharacters()
    {
        const QTemporaryDir folder;
        QVERIFY(QDir().mkpath(folder.path() + u"/L'été à\tl \\040\n"_s));
        const QByteArray escaped = folder.path().toUtf8() + "/L'été\\040à\\011l\\040\\134040\\012";
        const MountedImages images(line("8:1", "/", "/dev/sda1") + line("7:0", escaped, "/dev/loop0"), QString());
        const std::optional<MountedImages::Volume> volume = images.volumeOf(folder.path() + u"/L'été à\tl \\040\n"_s);
        QVERIFY(volume);
        QCOMPARE(volume->device, u"/dev/loop0"_s);
    }

    void brokenLinesAreSkipped()
    {
        const MountedImages images("\nx\n36 35 7:0 / /mnt rw\n36 35 7:0 / /mnt rw - ext4\n36 35 7:0 / /mnt\\ rw - ext4 "
                                   "/dev/loop0 rw\n",
                                   QString());
        QCOMPARE(devicesOf(images), QStringList{u"/dev/loop0"_s});
    }

    void theSystemHasARoot()
    {
        const std::optional<MountedImages::Volume> volume = MountedImages::ofSystem().volumeOf(u"/"_s);
        QVERIFY(volume);
        QVERIFY(volume->isRootFileSystem);
    }
};

template class RunnableTests<tst_MountedImages, void>;
#include "tst_mountedimages.moc"
