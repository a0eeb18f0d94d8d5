#include "support/move/BundleMover.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/support/move/MoveScene.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace MoveScene;

class tst_BundleMover : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aFreeDestinationGetsTheCopy()
    {
        RecordedMove platform;
        furnish(platform);
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QCOMPARE(afterQuestion(platform), (QStringList{movingLine, destinationFacts, copying, removing, relaunching}));
    }

    void anOldDestinationGoesToTheTrashFirst()
    {
        RecordedMove platform;
        furnish(platform);
        platform.facts.insert(destination, folder);
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QCOMPARE(afterQuestion(platform), (QStringList{movingLine, destinationFacts, u"running?"_s,
                                                       u"trash | "_s + destination, copying, removing, relaunching}));
    }

    void aRunningDestinationIsOpenedInstead_data()
    {
        QTest::addColumn<QString>("running");
        QTest::newRow("as it is named") << destination;
        QTest::newRow("in other words") << u"/home/anne/./Applications//Autre/../Pelmora.app/"_s;
    }

    void aRunningDestinationIsOpenedInstead()
    {
        QFETCH(const QString, running);
        RecordedMove platform;
        furnish(platform);
        platform.facts.insert(destination, folder);
        platform.running = {u"/Applications/Autre.app"_s, running};
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QCOMPARE(afterQuestion(platform),
                 (QStringList{movingLine, destinationFacts, u"running?"_s,
                              u"log info | INFO -- Switching to an already running version"_s, opening}));
    }

    void anotherRunningApplicationDoesNotPreventTheMove()
    {
        RecordedMove platform;
        furnish(platform);
        platform.facts.insert(destination, folder);
        platform.running = {source, u"/home/anne/Applications/Pelmora.app.app"_s, u"/home/anne/Applications"_s};
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QVERIFY(platform.record.contains(copying));
    }

    void aDestinationThatCannotBeTrashedEndsTheMove()
    {
        RecordedMove platform;
        furnish(platform);
        platform.facts.insert(destination, folder);
        platform.trashes = false;
        platform.recycles = false;
        QCOMPARE(moveWith(platform), MoveOutcome::Stays);
        const QStringList rest = afterQuestion(platform);
        QCOMPARE(rest.mid(rest.size() - 4),
                 (QStringList{u"trash | "_s + destination, u"recycle | Pelmora.app | "_s + ownFolder,
                              u"log error | ERROR -- Could not trash '/home/anne/Applications/Pelmora.app'"_s,
                              failureAlert}));
        QVERIFY(!platform.record.contains(copying));
    }

    void aFailedCopyEndsTheMove()
    {
        RecordedMove platform;
        furnish(platform);
        platform.copyFailure = u"le disque est plein, %@"_s;
        QCOMPARE(moveWith(platform), MoveOutcome::Stays);
        QCOMPARE(afterQuestion(platform),
                 (QStringList{movingLine, destinationFacts, copying,
                              u"log error | ERROR -- Could not copy '/home/anne/Downloads/Pelmora.app' to "
                              "'/home/anne/Applications/Pelmora.app' (le disque est plein, %@)"_s,
                              u"log error | ERROR -- Could not copy myself to /home/anne/Applications/Pelmora.app"_s,
                              failureAlert}));
    }

    void aLockedFolderRequiresAuthorization_data()
    {
        QTest::addColumn<Facts>("installFolder");
        QTest::addColumn<Facts>("present");
        QTest::addColumn<bool>("isNeeded");
        QTest::newRow("nothing there") << folder << missing << false;
        QTest::newRow("an old copy") << folder << folder << false;
        QTest::newRow("a locked copy") << folder << lockedFolder << true;
        QTest::newRow("a locked folder") << lockedFolder << missing << true;
        QTest::newRow("an own copy in a locked folder") << lockedFolder << folder << true;
    }

    void aLockedFolderRequiresAuthorization()
    {
        QFETCH(const Facts, installFolder);
        QFETCH(const Facts, present);
        QFETCH(const bool, isNeeded);
        RecordedMove platform;
        furnish(platform);
        platform.facts = {{ownFolder, installFolder}, {destination, present}};
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QCOMPARE(platform.record.contains(u"request"_s), isNeeded);
    }

    void authorizedCommandsDeleteThenCopy()
    {
        RecordedMove platform;
        furnish(platform);
        requireAuthorization(platform);
        // The deletion may fail with a status, but must not be killed.
        platform.authorizedEnds = {1, 0};
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        const QString relaunchingThere = QString(relaunching).replace(destination, lockedDestination);
        const QStringList rest{authorizedDelete, authorizedCopy, u"free authorization"_s, removing, relaunchingThere};
        QCOMPARE(afterQuestion(platform), authorizing + rest);
    }

    void aCancelledAuthorizationIsSilent()
    {
        RecordedMove platform;
        furnish(platform);
        requireAuthorization(platform);
        platform.right = MoveOperations::Right::Cancelled;
        QCOMPARE(moveWith(platform), MoveOutcome::Stays);
        const QStringList rest{u"log info | INFO -- Not moving because user canceled authorization"_s,
                               u"free authorization"_s};
        QCOMPARE(afterQuestion(platform), authorizing + rest);
    }

    void aFailedAuthorizationShowsTheAlert_data()
    {
        QTest::addColumn<MoveOperations::Right>("right");
        QTest::addColumn<QList<std::optional<int>>>("ends");
        QTest::addColumn<QStringList>("operations");
        using Ends = QList<std::optional<int>>;
        using Right = MoveOperations::Right;
        const QStringList deleted = authorizing + QStringList{authorizedDelete};
        const QStringList copied = deleted + QStringList{authorizedCopy};
        QTest::newRow("refused") << Right::Refused << Ends() << authorizing + authorizedFailure;
        QTest::newRow("delete killed") << Right::Granted << Ends{std::nullopt} << deleted + authorizedFailure;
        QTest::newRow("copy killed") << Right::Granted << Ends{0, std::nullopt} << copied + authorizedFailure;
        QTest::newRow("copy failed") << Right::Granted << Ends{0, 1} << copied + authorizedFailure;
    }

    void aFailedAuthorizationShowsTheAlert()
    {
        QFETCH(const MoveOperations::Right, right);
        QFETCH(const QList<std::optional<int>>, ends);
        QFETCH(const QStringList, operations);
        RecordedMove platform;
        furnish(platform);
        requireAuthorization(platform);
        platform.right = right;
        platform.authorizedEnds = ends;
        QCOMPARE(moveWith(platform), MoveOutcome::Stays);
        QCOMPARE(afterQuestion(platform), operations);
    }

    void onlyApplicationsAreReplacedWithAuthorization_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("another extension") << u"/home/anne/Downloads/Pelmora"_s;
        QTest::newRow("blank") << u"   "_s;
        QTest::newRow("empty") << QString();
    }

    void onlyApplicationsAreReplacedWithAuthorization()
    {
        QFETCH(const QString, path);
        RecordedMove platform;
        furnish(platform);
        requireAuthorization(platform);
        MoveSurroundings values = surroundings();
        values.bundlePath = path;
        QCOMPARE(moveWith(platform, values), MoveOutcome::Stays);
        QCOMPARE(afterQuestion(platform), QStringList{movingLine} + authorizedFailure.mid(1));
    }

    void aBlankSourceIsNotCopiedWithAuthorization_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("empty") << QString();
        QTest::newRow("blank") << u" \t\n"_s;
    }

    void aBlankSourceIsNotCopiedWithAuthorization()
    {
        QFETCH(const QString, path);
        RecordedMove platform;
        MoveSurroundings values = surroundings();
        values.bundlePath = path;
        const MoveDecision decision{.diskImageDevice = {},
                                    .installFolder = {},
                                    .destinationPath = u"/Applications/Pelmora.app"_s,
                                    .needsAuthorization = true};
        const LinuxMoveCommands commands;
        QCOMPARE(BundleMover(values, decision, commands, platform).move(), BundleMover::End::Failed);
        QCOMPARE(platform.record, (QStringList{movingLine, authorizedFailure.at(1)}));
    }

    void aSourceThatCannotBeDeletedGoesToTheTrash()
    {
        RecordedMove platform;
        furnish(platform);
        platform.removeFailure = u"lecture seule"_s;
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QCOMPARE(afterQuestion(platform).mid(3),
                 (QStringList{removing,
                              u"log warning | WARNING -- Could not delete '/home/anne/Downloads/Pelmora.app': "
                              "lecture seule"_s,
                              u"trash | /home/anne/Downloads/Pelmora.app"_s, relaunching}));
    }

    void aSourceThatCannotBeTrashedIsKept()
    {
        RecordedMove platform;
        furnish(platform);
        platform.removeFailure = u"lecture seule"_s;
        platform.trashes = false;
        platform.recycles = false;
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        const QStringList rest = afterQuestion(platform);
        QCOMPARE(rest.mid(rest.size() - 3),
                 (QStringList{u"log error | ERROR -- Could not trash '/home/anne/Downloads/Pelmora.app'"_s,
                              u"log warning | WARNING -- Could not delete application after moving it to Applications "
                              "folder"_s,
                              relaunching}));
    }

    void aTranslocatedSourceIsTrashedWithoutALogLine()
    {
        RecordedMove platform;
        furnish(platform);
        platform.removeFailure = u"lecture seule"_s;
        MoveSurroundings values = surroundings();
        values.bundlePath = u"/private/var/AppTranslocation/1F/d/Pelmora.app"_s;
        QCOMPARE(moveWith(platform, values), MoveOutcome::Ends);
        QCOMPARE(afterQuestion(platform).mid(3),
                 (QStringList{u"remove | "_s + values.bundlePath, u"trash | "_s + values.bundlePath, relaunching}));
    }

    void aNestedCopyIsNeitherDeletedNorEjected_data()
    {
        QTest::addColumn<bool>("isOnDiskImage");
        QTest::newRow("on a disk image") << true;
        QTest::newRow("on the machine's disk") << false;
    }

    void aNestedCopyIsNeitherDeletedNorEjected()
    {
        QFETCH(const bool, isOnDiskImage);
        RecordedMove platform;
        furnish(platform);
        if (isOnDiskImage)
            putOnDiskImage(platform);
        MoveSurroundings values = surroundings();
        values.bundlePath = u"/Applications/Autre.app/Contents/Pelmora.app"_s;
        QCOMPARE(moveWith(platform, values), MoveOutcome::Ends);
        QCOMPARE(afterQuestion(platform),
                 (QStringList{movingLine, destinationFacts,
                              u"copy | /Applications/Autre.app/Contents/Pelmora.app | "_s + destination, relaunching}));
    }

    void aDiskImageIsEjectedAndNotDeleted()
    {
        RecordedMove platform;
        furnish(platform);
        putOnDiskImage(platform);
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QCOMPARE(afterQuestion(platform), (QStringList{movingLine, destinationFacts, copying, relaunching, ejecting}));
    }
};

template class RunnableTests<tst_BundleMover, void>;
#include "tst_bundlemover.moc"
