#include "app/models/CommandLine.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

std::expected<CommandLine, QString> parsed(const QStringList& arguments)
{
    return CommandLine::parse(QStringList{u"pelmora"_s} + arguments);
}

} // namespace

class tst_CommandLine : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void withoutArgumentsTheWindowIsShown()
    {
        const CommandLine command = parsed({}).value();
        QCOMPARE(command.action, CommandLine::Action::ShowWindow);
        QVERIFY(command.cards.isEmpty());
        QVERIFY(!command.simulate);
        QVERIFY(!command.cardService);
    }

    void aFileIsTheCardOfTheWindow() { QCOMPARE(parsed({u"carte.xml"_s}).value().cards, QStringList{u"carte.xml"_s}); }

    void saveTakesAFolderAndCards()
    {
        const CommandLine command = parsed({u"--save"_s, u"dossier"_s, u"a.xml"_s, u"b.xml"_s}).value();
        QCOMPARE(command.action, CommandLine::Action::Save);
        QCOMPARE(command.folder, u"dossier"_s);
        QCOMPARE(command.cards, (QStringList{u"a.xml"_s, u"b.xml"_s}));
    }

    void printTakesCardsAndNoValue()
    {
        const CommandLine command = parsed({u"--print"_s, u"a.xml"_s, u"b.xml"_s}).value();
        QCOMPARE(command.action, CommandLine::Action::Print);
        QCOMPARE(command.cards, (QStringList{u"a.xml"_s, u"b.xml"_s}));
    }

    void theProgramsOwnOptionIsNotForPeople() { QVERIFY(!CommandLine::helpText().contains(u"helper"_s)); }

    void readTakesCardsAndMayBeForced()
    {
        const CommandLine command = parsed({u"--read"_s, u"-"_s, u"b.xml"_s}).value();
        QCOMPARE(command.action, CommandLine::Action::Read);
        QCOMPARE(command.cards, (QStringList{u"-"_s, u"b.xml"_s}));
        QVERIFY(!command.isForced);
        QVERIFY(parsed({u"--read"_s, u"--force"_s}).value().isForced);
    }

    void aLauncherMayBeAddedAndRemoved()
    {
        QCOMPARE(parsed({u"--add-launcher"_s}).value().action, CommandLine::Action::AddLauncher);
        QCOMPARE(parsed({u"--remove-launcher"_s}).value().action, CommandLine::Action::RemoveLauncher);
    }

    void theWindowMayBeAskedForAnAction()
    {
        QVERIFY(parsed({u"--action=lire"_s}).value().desktopAction == DesktopAction::Read);
        QVERIFY(parsed({u"--simulate"_s, u"--action"_s, u"dossier"_s}).value().desktopAction ==
                DesktopAction::OpenFolder);
        QVERIFY(!parsed({}).value().desktopAction);
    }

    void resultsOfSavingAndPrintingMayBeJson()
    {
        QVERIFY(parsed({u"--save=x"_s, u"--json"_s, u"a.xml"_s}).value().isJson);
        QVERIFY(parsed({u"--json"_s, u"--print"_s}).value().isJson);
        QVERIFY(!parsed({u"--print"_s}).value().isJson);
    }

    void printWithoutACardTakesTheReaders()
    {
        const CommandLine command = parsed({u"--simulate"_s, u"--print"_s}).value();
        QCOMPARE(command.action, CommandLine::Action::Print);
        QVERIFY(command.simulate);
        QVERIFY(command.cards.isEmpty());
    }

    void aSimulatedReaderNeedsNoCardFile()
    {
        const CommandLine command = parsed({u"--simulate"_s, u"carte.xml"_s}).value();
        QVERIFY(command.simulate);
        QVERIFY(!command.simulatedCard);
        QCOMPARE(command.cards, QStringList{u"carte.xml"_s});
    }

    void aSimulatedReaderMayHaveACardFile()
    {
        const CommandLine command = parsed({u"--simulate=a b.xml"_s}).value();
        QVERIFY(command.simulate);
        QCOMPARE(command.simulatedCard, u"a b.xml"_s);
    }

    void whatFollowsTwoDashesIsACardFile()
    {
        QCOMPARE(parsed({u"--"_s, u"--simulate"_s}).value().cards, QStringList{u"--simulate"_s});
    }

    void anotherCardServiceIsNamed()
    {
        QCOMPARE(parsed({u"--card-service"_s, u"/opt/service"_s}).value().cardService, u"/opt/service"_s);
    }

    void helpAndVersionWinOverTheRest()
    {
        QCOMPARE(parsed({u"--save"_s, u"x"_s, u"--help"_s}).value().action, CommandLine::Action::ShowHelp);
        QCOMPARE(parsed({u"-v"_s}).value().action, CommandLine::Action::ShowVersion);
        QCOMPARE(parsed({u"--version"_s}).value().action, CommandLine::Action::ShowVersion);
    }

    void theHelpNamesEveryOption()
    {
        for (const QString& option :
             {u"--save"_s, u"--print"_s, u"--read"_s, u"--action"_s, u"--add-launcher"_s, u"--remove-launcher"_s,
              u"--json"_s, u"--force"_s, u"--simulate"_s, u"--card-service"_s, u"--help"_s, u"--version"_s})
            QVERIFY2(CommandLine::helpText().contains(option), qPrintable(option));
    }

    void aMisuseIsTold_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");
        QTest::newRow("unknown") << QStringList{u"--frobnicate"_s} << u"option inconnue : frobnicate."_s;
        QTest::newRow("no folder")
            << QStringList{u"--save"_s}
            << u"la valeur d’une option manque, ou est donnée à une option qui n’en prend pas."_s;
        QTest::newRow("empty folder") << QStringList{u"--save="_s} << u"l’option --save demande le nom d’un dossier."_s;
        QTest::newRow("an option for a folder")
            << QStringList{u"--save"_s, u"--simulate"_s} << u"l’option --save demande le nom d’un dossier."_s;
        QTest::newRow("an option for a service") << QStringList{u"--card-service"_s, u"--help"_s}
                                                 << u"l’option --card-service demande le nom d’un programme."_s;
        QTest::newRow("save and print") << QStringList{u"--save=x"_s, u"--print"_s}
                                        << u"les options --save et --print s’excluent l’une l’autre."_s;
        QTest::newRow("read and print") << QStringList{u"--read"_s, u"--print"_s}
                                        << u"les options --print et --read s’excluent l’une l’autre."_s;
        QTest::newRow("unknown action") << QStringList{u"--action=quitter"_s}
                                        << u"l’option --action demande lire, imprimer ou dossier."_s;
        QTest::newRow("an action and a card")
            << QStringList{u"--action=lire"_s, u"a.xml"_s}
            << u"l’option --action n’accompagne ni un fichier de carte, ni une autre commande."_s;
        QTest::newRow("a launcher and a card")
            << QStringList{u"--add-launcher"_s, u"a.xml"_s} << u"un lanceur ne demande pas de fichier de carte."_s;
        QTest::newRow("two launchers")
            << QStringList{u"--add-launcher"_s, u"--remove-launcher"_s}
            << u"les options --add-launcher et --remove-launcher s’excluent l’une l’autre."_s;
        QTest::newRow("a window as JSON")
            << QStringList{u"--json"_s} << u"l’option --json accompagne --save ou --print."_s;
        QTest::newRow("read as JSON") << QStringList{u"--read"_s, u"--json"_s}
                                      << u"l’option --json accompagne --save ou --print."_s;
        QTest::newRow("a forced save") << QStringList{u"--save=x"_s, u"--force"_s}
                                       << u"l’option --force accompagne --read."_s;
        QTest::newRow("the standard input twice") << QStringList{u"--save=x"_s, u"-"_s, u"a.xml"_s, u"-"_s}
                                                  << u"l’entrée standard (-) ne peut être lue qu’une fois."_s;
        QTest::newRow("print to a value")
            << QStringList{u"--print=x"_s}
            << u"la valeur d’une option manque, ou est donnée à une option qui n’en prend pas."_s;
        QTest::newRow("two services") << QStringList{u"--simulate"_s, u"--card-service=x"_s}
                                      << u"les options --simulate et --card-service s’excluent l’une l’autre."_s;
        QTest::newRow("empty service") << QStringList{u"--card-service="_s}
                                       << u"l’option --card-service demande le nom d’un programme."_s;
        QTest::newRow("two cards") << QStringList{u"a.xml"_s, u"b.xml"_s}
                                   << u"un seul fichier de carte peut être ouvert à la fois."_s;
    }

    void aMisuseIsTold()
    {
        QFETCH(const QStringList, arguments);
        const std::expected<CommandLine, QString> command = parsed(arguments);
        QVERIFY(!command.has_value());
        QTEST(command.error(), "reason");
    }
};

template class RunnableTests<tst_CommandLine, void>;
#include "tst_commandline.moc"
