#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/support/move/MoveScene.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace MoveScene;

class tst_MoveDecision : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void onlyAVolumeOnTheDeviceOfAnImageIsEjected_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<bool>("isFound");
        const QByteArray ours = entity(imageDevice.toUtf8());
        const QByteArray other = entity("/dev/loop9");
        QTest::newRow("the second image") << twoImages() << true;
        QTest::newRow("other devices") << imageList("<array>" + image("<array>" + other + "</array>") + "</array>")
                                       << false;
        QTest::newRow("no image") << imageList("<array/>") << false;
        QTest::newRow("nothing") << QByteArray() << false;
        QTest::newRow("no property list") << QByteArray("udisksctl: erreur") << false;
        QTest::newRow("an array") << QByteArray("<plist version=\"1.0\"><array>" + ours + "</array></plist>") << false;
        QTest::newRow("no images") << QByteArray("<plist version=\"1.0\"><dict/></plist>") << false;
        QTest::newRow("images of another type") << imageList("<string>x</string>") << false;
        const QByteArray goodImage = image("<array>" + ours + "</array>");
        QTest::newRow("a strange image before")
            << imageList("<array><string>x</string>" + goodImage + "</array>") << false;
        QTest::newRow("a strange image after")
            << imageList("<array>" + goodImage + "<string>x</string></array>") << true;
        QTest::newRow("an image without entities") << imageList("<array><dict/>" + goodImage + "</array>") << false;
        QTest::newRow("entities of another type")
            << imageList("<array>" + image("<true/>") + goodImage + "</array>") << false;
        QTest::newRow("a strange entity")
            << imageList("<array>" + image("<array><integer>1</integer>" + ours + "</array>") + "</array>") << false;
        QTest::newRow("an entity without device")
            << imageList("<array>" + image("<array><dict/>" + ours + "</array>") + "</array>") << false;
        QTest::newRow("a device of another type")
            << imageList("<array>" + image("<array><dict><key>dev-entry</key><true/></dict>" + ours + "</array>") +
                         "</array>")
            << false;
    }

    void onlyAVolumeOnTheDeviceOfAnImageIsEjected()
    {
        QFETCH(const QByteArray, list);
        QFETCH(const bool, isFound);
        RecordedMove platform;
        furnish(platform);
        platform.volume = Volume{false, imageDevice};
        platform.images = list;
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QCOMPARE(platform.record.contains(ejecting), isFound);
        QCOMPARE(platform.record.contains(removing), !isFound);
    }

    void anUnknownVolumeIsNotTreatedAsAnImage()
    {
        RecordedMove platform;
        furnish(platform);
        platform.images = twoImages();
        platform.volume.reset();
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QVERIFY(!platform.record.contains(listing));
        QVERIFY(platform.record.contains(removing));
    }
};

template class RunnableTests<tst_MoveDecision, void>;
#include "tst_movedecision.moc"
