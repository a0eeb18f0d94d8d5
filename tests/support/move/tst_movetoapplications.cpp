#include "platform/Bundle.h"
#include "support/move/MountedImages.h"
#include "support/move/MoveTexts.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/support/move/MoveScene.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace MoveScene;

class tst_MoveToApplications : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aSuppressedQuestionIsNotAsked()
    {
        RecordedMove platform;
        furnish(platform);
        platform.suppressed = true;
        QCOMPARE(moveWith(platform), MoveOutcome::Stays);
        QCOMPARE(platform.record, QStringList{u"suppressed?"_s});
    }

    void inAnApplicationsFolderTheQuestionIsNotAsked_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("isAsked");
        QTest::newRow("local") << u"/Applications/Pelmora.app"_s << false;
        QTest::newRow("deeper") << u"/Applications/Santé/Pelmora.app"_s << false;
        QTest::newRow("user") << u"/home/anne/Applications/Pelmora.app"_s << false;
        QTest::newRow("component of another volume") << u"/Volumes/Disque/Applications/Pelmora.app"_s << false;
        QTest::newRow("a path that only begins so") << u"/Applications2/Pelmora.app"_s << false;
        QTest::newRow("a component that only begins so") << u"/Volumes/Applications2/Pelmora.app"_s << true;
        QTest::newRow("another case") << u"/Volumes/applications/Pelmora.app"_s << true;
        QTest::newRow("elsewhere") << u"/home/anne/Bureau/Pelmora.app"_s << true;
    }

    void inAnApplicationsFolderTheQuestionIsNotAsked()
    {
        QFETCH(const QString, path);
        QFETCH(const bool, isAsked);
        RecordedMove platform;
        furnish(platform);
        platform.answer = {false, false};
        MoveSurroundings values = surroundings();
        values.bundlePath = path;
        QCOMPARE(moveWith(platform, values), MoveOutcome::Stays);
        QCOMPARE(platform.record, isAsked ? questions(values) : QStringList{u"suppressed?"_s});
    }

    void insideAnotherApplicationTheQuestionIsAskedAnywhere()
    {
        RecordedMove platform;
        furnish(platform);
        platform.answer = {false, false};
        MoveSurroundings values = surroundings();
        values.bundlePath = u"/Applications/Autre.app/Contents/Pelmora.app"_s;
        QCOMPARE(moveWith(platform, values), MoveOutcome::Stays);
        QCOMPARE(platform.record, questions(values));
    }

    void theOrderOfTheQuestionsIsFixed()
    {
        RecordedMove platform;
        furnish(platform);
        putOnDiskImage(platform);
        platform.answer = {false, false};
        QCOMPARE(moveWith(platform), MoveOutcome::Stays);
        QStringList expected = questions();
        expected.insert(2, listing);
        QCOMPARE(platform.record, expected);
    }

    void theUsersFolderIsChosenWhenItContainsAnApplication_data()
    {
        QTest::addColumn<Facts>("facts");
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<bool>("isChosen");
        QTest::newRow("an application") << folder << QStringList{u"Autre.app"_s} << true;
        QTest::newRow("several things") << folder << QStringList{u"a"_s, u"b.txt"_s, u"c.app"_s} << true;
        QTest::newRow("empty") << folder << QStringList() << false;
        QTest::newRow("no application") << folder << QStringList{u"notes.app.txt"_s, u"app"_s} << false;
        QTest::newRow("only the extension") << folder << QStringList{u".app"_s} << false;
        QTest::newRow("missing") << missing << QStringList{u"Autre.app"_s} << false;
        QTest::newRow("a file") << Facts{true, false, true} << QStringList{u"Autre.app"_s} << false;
    }

    void theUsersFolderIsChosenWhenItContainsAnApplication()
    {
        QFETCH(const Facts, facts);
        QFETCH(const QStringList, entries);
        QFETCH(const bool, isChosen);
        RecordedMove platform;
        platform.facts = {{ownFolder, facts}, {u"/Applications"_s, folder}};
        platform.entries = {{ownFolder, entries}};
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QCOMPARE(platform.question.title,
                 isChosen ? u"Move to Applications folder in your Home folder?"_s : u"Move to Applications folder?"_s);
        const QString chosen = isChosen ? ownFolder : u"/Applications"_s;
        QVERIFY(platform.record.contains(u"copy | "_s + source + u" | "_s + chosen + u"/Pelmora.app"_s));
    }

    void withoutAFolderToMoveToTheQuestionIsNotAsked()
    {
        RecordedMove platform;
        MoveSurroundings values = surroundings();
        values.localApplicationsFolders.clear();
        QCOMPARE(moveWith(platform, values), MoveOutcome::Stays);
        QCOMPARE(platform.record.last(), u"facts? | /home/anne/Applications"_s);
    }

    void installFoldersAreResolved()
    {
        RecordedMove platform;
        furnish(platform);
        platform.links = {{ownFolder, u"/disque/Applications"_s}};
        platform.facts.insert(u"/disque/Applications"_s, folder);
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QVERIFY(
            platform.record.contains(u"copy | /home/anne/Downloads/Pelmora.app | /disque/Applications/Pelmora.app"_s));

        RecordedMove local;
        local.links = {{u"/Applications"_s, u"/System/Applications"_s}};
        local.facts.insert(u"/System/Applications"_s, folder);
        QCOMPARE(moveWith(local), MoveOutcome::Ends);
        QVERIFY(local.record.contains(u"copy | /home/anne/Downloads/Pelmora.app | /System/Applications/Pelmora.app"_s));
    }

    void theAlertShowsTheDestinationAndTheNeededRights_data()
    {
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<bool>("isOwn");
        QTest::addColumn<bool>("isLocked");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("body");
        const QString home = u"Move to Applications folder in your Home folder?"_s;
        const QString local = u"Move to Applications folder?"_s;
        const QString body = u"I can move myself to the Applications folder if you'd like."_s;
        const QString password = body + u" Note that this will require an administrator password."_s;
        const QString downloads = body + u" This will keep your Downloads folder uncluttered."_s;
        const QString desktop = u"/home/anne/Bureau/Pelmora.app"_s;
        QTest::newRow("home, Downloads") << source << true << false << home << downloads;
        QTest::newRow("home, desktop") << desktop << true << false << home << body;
        QTest::newRow("home, locked") << desktop << true << true << home << password;
        QTest::newRow("local, Downloads") << source << false << false << local << downloads;
        QTest::newRow("local, locked, Downloads") << source << false << true << local << password;
        QTest::newRow("local, desktop") << desktop << false << false << local << body;
    }

    void theAlertShowsTheDestinationAndTheNeededRights()
    {
        QFETCH(const QString, bundle);
        QFETCH(const bool, isOwn);
        QFETCH(const bool, isLocked);
        QFETCH(const QString, title);
        QFETCH(const QString, body);
        RecordedMove platform;
        platform.answer = {false, false};
        platform.facts = {{ownFolder, isLocked ? lockedFolder : folder},
                          {u"/Applications"_s, isLocked ? lockedFolder : folder}};
        if (isOwn)
            platform.entries = {{ownFolder, {u"Autre.app"_s}}};
        MoveSurroundings values = surroundings();
        values.bundlePath = bundle;
        QCOMPARE(moveWith(platform, values), MoveOutcome::Stays);
        QCOMPARE(platform.question.title, title);
        QCOMPARE(platform.question.body, body);
        QCOMPARE(platform.question.moveButton, u"Move to Applications Folder"_s);
        QCOMPARE(platform.question.stayButton, u"Do Not Move"_s);
        QCOMPARE(platform.question.suppressionBox, u"Do not show this message again"_s);
    }

    void theAlertIsInTheUsersLanguage()
    {
        RecordedMove platform;
        furnish(platform);
        platform.copyFailure = u"plein"_s;
        const StringTable french =
            StringTable::load(Bundle(QStringLiteral(PELMORA_SOURCE "/resources")), u"MoveApplication"_s, {u"fr-FR"_s});
        QCOMPARE(moveToApplications(surroundings(), LinuxMoveCommands(), french, platform), MoveOutcome::Stays);
        QCOMPARE(platform.question.title, u"Déplacer vers le dossier Applications de votre dossier personnel\u202f?"_s);
        QCOMPARE(platform.question.body, u"Je peux me déplacer vers le dossier Applications si vous le souhaitez. "
                                         "Votre dossier Téléchargements restera ainsi bien rangé."_s);
        QCOMPARE(platform.question.moveButton, u"Déplacer vers le dossier Applications"_s);
        QCOMPARE(platform.question.stayButton, u"Ne pas déplacer"_s);
        QCOMPARE(platform.question.suppressionBox, u"Ne plus afficher ce message"_s);
        QCOMPARE(platform.record.last(), u"alert | Le déplacement vers le dossier Applications a échoué"_s);
    }

    void everyTextIsTranslated()
    {
        const StringTable french =
            StringTable::load(Bundle(QStringLiteral(PELMORA_SOURCE "/resources")), u"MoveApplication"_s, {u"fr"_s});
        for (const QStringView text : {MoveText::titleInHome, MoveText::title, MoveText::body,
                                       MoveText::authorizationNote, MoveText::downloadsNote, MoveText::moveButton,
                                       MoveText::stayButton, MoveText::suppressionBox, MoveText::failure})
            QVERIFY2(french.localizedString(text) != text, qPrintable(text.toString()));
    }

    void anInactiveApplicationIsActivatedFirst()
    {
        RecordedMove platform;
        furnish(platform);
        platform.active = false;
        platform.answer = {false, false};
        QCOMPARE(moveWith(platform), MoveOutcome::Stays);
        QCOMPARE(platform.record.mid(platform.record.size() - 3), (QStringList{u"active?"_s, u"activate"_s, u"ask"_s}));
    }

    void decliningStoresTheBoxOnlyWhenItIsTicked()
    {
        RecordedMove without;
        furnish(without);
        without.answer = {false, false};
        QCOMPARE(moveWith(without), MoveOutcome::Stays);
        QCOMPARE(afterQuestion(without), QStringList());

        RecordedMove with;
        furnish(with);
        with.answer = {false, true};
        QCOMPARE(moveWith(with), MoveOutcome::Stays);
        QCOMPARE(afterQuestion(with), QStringList{u"suppress"_s});
    }

    void acceptingNeverStoresTheBox()
    {
        RecordedMove platform;
        furnish(platform);
        platform.answer = {true, true};
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QVERIFY(!platform.record.contains(u"suppress"_s));
    }

    void aMountedImageIsEjected()
    {
        RecordedMove platform;
        furnish(platform);
        platform.volume = Volume{false, u"/dev/loop0"_s};
        platform.images = MountedImages("36 1 7:0 / /media/x ro - ext4 /dev/loop0 ro\n", QString()).propertyList();
        QCOMPARE(moveWith(platform), MoveOutcome::Ends);
        QCOMPARE(platform.record.at(2), u"images?"_s);
        QVERIFY(!platform.record.contains(removing));
        QVERIFY2(platform.record.last().contains("(d='/dev/loop0'; sleep 5 && udisksctl unmount"_L1),
                 qPrintable(platform.record.last()));
    }
};

template class RunnableTests<tst_MoveToApplications, void>;
#include "tst_movetoapplications.moc"
