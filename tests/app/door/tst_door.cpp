#include "app/door/Door.h"
#include "app/models/CommandLine.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr auto executable = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;

struct Run
{
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;

    friend bool operator==(const Run&, const Run&) = default;
};

Run run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QByteArray chosen(const std::vector<const char*>& words)
{
    std::vector<const char*> arguments{"pelmora"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return programFor(arguments);
}

// The program that accepts these words. Both programs read them with CommandLine::parse.
QByteArray expected(const std::vector<const char*>& words)
{
    QStringList arguments{u"pelmora"_s};
    for (const char* word : words)
        arguments.append(QString::fromUtf8(word));
    const auto command = CommandLine::parse(arguments);
    return command && command->action == CommandLine::Action::ShowWindow ? "pelmora-window" : "pelmora-cards";
}

} // namespace

class tst_Door : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;

    // A tree whose programs print their path and arguments.
    [[nodiscard]] QString tree() const { return m_folder->filePath(u"L'été 100 %s"_s); }
    [[nodiscard]] QString door() const { return tree() + "/bin/pelmora"_L1; }
    [[nodiscard]] QString program(const QString& name) const { return tree() + "/libexec/pelmora/"_L1 + name; }
    [[nodiscard]] bool makeTree() const
    {
        if (!QDir().mkpath(tree() + "/bin"_L1) || !QDir().mkpath(program({})) ||
            !QFile::copy(u"" PELMORA_STAGE "/bin/pelmora"_s, door()))
            return false;
        for (const QString& name : {u"pelmora-window"_s, u"pelmora-cards"_s}) {
            QFile script(program(name));
            if (!script.open(QIODevice::WriteOnly) || !script.setPermissions(executable))
                return false;
            script.write("#!/bin/sh\nprintf '%s\\n' \"$0\" \"$@\"\nexit 7\n");
        }
        return true;
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(makeTree());
    }

    void eachCommandIsRunByItsProgram_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("program");
        const auto window = u"pelmora-window"_s;
        const auto cards = u"pelmora-cards"_s;
        QTest::newRow("nothing") << QStringList() << window;
        QTest::newRow("a card") << QStringList{u"carte.xml"_s} << window;
        QTest::newRow("simulated") << QStringList{u"--simulate=carte.xml"_s, u"carte.xml"_s} << window;
        QTest::newRow("another service") << QStringList{u"--card-service"_s, u"service"_s} << window;
        QTest::newRow("a card named as an option") << QStringList{u"--"_s, u"--save"_s} << window;
        QTest::newRow("a service named as an option") << QStringList{u"--card-service=-v"_s} << window;
        QTest::newRow("an action") << QStringList{u"--action=imprimer"_s} << window;
        QTest::newRow("an unknown action") << QStringList{u"--action=x"_s} << cards;
        QTest::newRow("save") << QStringList{u"--simulate"_s, u"--save"_s, u"dossier"_s} << cards;
        QTest::newRow("print") << QStringList{u"carte.xml"_s, u"--print"_s} << cards;
        QTest::newRow("help") << QStringList{u"--help"_s} << cards;
        QTest::newRow("version") << QStringList{u"-v"_s} << cards;
        QTest::newRow("unknown option") << QStringList{u"--frobnicate"_s} << cards;
        QTest::newRow("two cards") << QStringList{u"a.xml"_s, u"b.xml"_s} << cards;
        QTest::newRow("two services") << QStringList{u"--simulate"_s, u"--card-service=x"_s} << cards;
    }
    void eachCommandIsRunByItsProgram()
    {
        QFETCH(const QStringList, arguments);
        QFETCH(const QString, program);
        const QByteArray told = (QStringList(this->program(program)) + arguments).join(u'\n').toUtf8() + '\n';
        QCOMPARE(run(door(), arguments), (Run{7, told, {}}));
    }

    void theDoorChoosesTheProgramThatTheParserAcceptsForAnyArguments()
    {
        constexpr std::array words{"-",
                                   "",
                                   "a.xml",
                                   "--",
                                   "--simulate",
                                   "--simulate=x",
                                   "-v",
                                   "--save",
                                   "--card-service",
                                   "--card-service=",
                                   "--card-service=x",
                                   "--action",
                                   "--action=lire",
                                   "dossier",
                                   "--help",
                                   "--print=x",
                                   "--simulated",
                                   "-simulate"};
        std::vector<std::vector<const char*>> commands{{}};
        for (std::size_t done = 0; done < commands.size(); ++done) {
            const std::vector<const char*> command = commands[done];
            if (chosen(command) != expected(command)) {
                QByteArray text;
                for (const char* word : command)
                    text += QByteArray(" '") + word + '\'';
                QFAIL((chosen(command) + text).constData());
            }
            for (const char* word : command.size() < 3 ? std::span(words) : std::span(words).first(0)) {
                commands.push_back(command);
                commands.back().push_back(word);
            }
        }
    }

    void everyActionOfALauncherIsKnown()
    {
        for (const DesktopActionName& each : desktopActions)
            QVERIFY2(isDesktopAction(each.name.toString().toStdString()), qPrintable(each.name.toString()));
    }

    void theTreeIsFoundThroughLinks()
    {
        const QString link = m_folder->filePath(u"lien"_s);
        QVERIFY(QFile::link(door(), link));
        QCOMPARE(run(link, {}), (Run{7, program(u"pelmora-window"_s).toUtf8() + '\n', {}}));
    }

    void theProgramsAreFoundWhereverTheTreeIsInstalled()
    {
        const QString moved = m_folder->filePath(u"ailleurs"_s);
        QVERIFY(QDir().rename(tree(), moved));
        QCOMPARE(run(moved + "/bin/pelmora"_L1, {}).output, (moved + "/libexec/pelmora/pelmora-window\n"_L1).toUtf8());
    }

    void theProgramGetsTheNameThatTheDoorWasStartedWith()
    {
        QVERIFY(QFile::remove(program(u"pelmora-window"_s)));
        QVERIFY(QFile::copy(QStandardPaths::findExecutable(u"cat"_s), program(u"pelmora-window"_s)));
        const Run result = run(u"/bin/bash"_s, {u"-c"_s, u"exec -a attestations \"$0\" absent"_s, door()});
        QVERIFY2(result.errors.startsWith("attestations: absent: "), result.errors.constData());
    }

    void aMissingProgramIsReportedInOneLine()
    {
        QVERIFY(QFile::remove(program(u"pelmora-cards"_s)));
        QCOMPARE(run(door(), {u"--help"_s}), (Run{1, {}, "pelmora : l’installation de Pelmora est incomplète.\n"}));
        QCOMPARE(run(door(), {}).exitCode, 7);
    }

    void aProgramStartedWithTheOtherProgramsArgumentsRefuses()
    {
        const auto stage = u"" PELMORA_STAGE "/libexec/pelmora/"_s;
        QCOMPARE(run(stage + u"pelmora-cards"_s, {u"carte.xml"_s}),
                 (Run{2, {}, "pelmora : pelmora-cards n’ouvre pas de fenêtre.\n« pelmora --help » affiche l’aide.\n"}));
        QCOMPARE(run(stage + u"pelmora-window"_s, {u"--help"_s}),
                 (Run{2,
                      {},
                      "pelmora : pelmora-window ne fait qu’ouvrir la fenêtre.\n« pelmora --help » affiche l’aide.\n"}));
        // Both programs report a wrong command with the same text.
        QCOMPARE(run(stage + u"pelmora-window"_s, {u"--frobnicate"_s}),
                 run(stage + u"pelmora-cards"_s, {u"--frobnicate"_s}));
    }
};

template class RunnableTests<tst_Door, QCoreApplication>;
#include "tst_door.moc"
