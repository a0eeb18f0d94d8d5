#include "card/wire/ServiceMessage.h"
#include "card/wire/ServiceVocabulary.h"
#include "platform/FileDescriptor.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCborArray>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <csignal>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

const QString program = QStringLiteral(PELMORA_STAGE "/libexec/pelmora/com.morvel.lvit");
const QString specimen = QStringLiteral(PELMORA_STAGE_SHARE "/specimen.xml");
const QString feitian = u"Feitian SCR301"_s;
constexpr int patience = 10'000; // milliseconds

/// Whether this program's children start with a core limit of 0 that only the privileged can raise.
bool coresAreForbidden()
{
    rlimit limit{};
    return ::getrlimit(RLIMIT_CORE, &limit) == 0 && limit.rlim_max == 0;
}

QProcessEnvironment withoutASite()
{
    static const QTemporaryDir folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_CONFIG_HOME"_s, folder.path());
    environment.insert(u"XDG_CONFIG_DIRS"_s, folder.path());
    // The readers of the machine are not used.
    environment.insert(u"PCSCLITE_CSOCK_NAME"_s, folder.filePath(u"absent"_s));
    return environment;
}

/// The program, with one request at a time over its pipes.
class Service
{
public:
    explicit Service(const QStringList& arguments, const QProcessEnvironment& environment = withoutASite())
    {
        m_process.setProcessEnvironment(environment);
        m_process.start(program, arguments);
        m_process.waitForStarted(patience);
    }

    std::optional<QCborMap> ask(QLatin1StringView command, QCborMap fields = {})
    {
        fields.insert(ServiceWord::command, command);
        m_process.write(encodeServiceMessage({.number = ++m_number, .body = fields}));
        for (;;) {
            const auto next = m_reader.next();
            if (!next)
                return std::nullopt;
            // Messages about the reader's state can arrive before the reply.
            if (*next && (*next)->number == 0)
                continue;
            if (*next)
                return (*next)->number == m_number ? (*next)->body : std::nullopt;
            if (!m_process.waitForReadyRead(patience))
                return std::nullopt;
            m_reader.append(m_process.readAllStandardOutput());
        }
    }

    bool bind()
    {
        const auto init = ask(ServiceWord::init, {{ServiceWord::mode, u"0"_s}});
        const auto choice = ask(ServiceWord::setReaders,
                                {{ServiceWord::vitaleReaderName, feitian}, {ServiceWord::cpsReaderName, feitian}});
        return init && choice && choice->value(ServiceWord::status) == QCborValue(ServiceWord::success);
    }

    /// The exit code after the end of its input; -1 when it did not exit by itself.
    int finish(const QByteArray& lastBytes = {})
    {
        m_process.write(lastBytes);
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(patience) || m_process.exitStatus() != QProcess::NormalExit)
            return -1;
        return m_process.exitCode();
    }

    QProcess& process() { return m_process; }

private:
    QProcess m_process;
    ServiceMessageReader m_reader;
    qint64 m_number = 0;
};

struct Run
{
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

Run runWith(const QStringList& arguments)
{
    QProcess process;
    process.setProcessEnvironment(withoutASite());
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, arguments);
    const bool left = process.waitForFinished(patience) && process.exitStatus() == QProcess::NormalExit;
    return {left ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

class tst_CardService : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void allFiveCommandsAreAnswered()
    {
        Service service({u"--simulate"_s, specimen});
        const QCborMap initialised{{u"Status"_s, u"success"_s}, {u"Embedded"_s, u"true"_s}};
        QCOMPARE(service.ask("init"_L1, {{u"Mode"_s, u"0"_s}}), std::optional(initialised));
        const QCborMap readers{{u"Status"_s, u"success"_s}, {u"Readers"_s, QCborArray{feitian}}};
        QCOMPARE(service.ask("readers_list"_L1), std::optional(readers));
        const QCborMap chosen{{u"Status"_s, u"success"_s}};
        QCOMPARE(service.ask("set_readers"_L1, {{u"vitale_reader_name"_s, feitian}, {u"cps_reader_name"_s, feitian}}),
                 std::optional(chosen));
        const std::optional<QCborMap> informations = service.ask("informations"_L1);
        QVERIFY(informations && informations->value("Informations"_L1).toString().contains(u"<apiLecVitale>"_s));
        const QCborMap card{{u"Status"_s, u"success"_s},
                            {u"Vitale"_s, QString::fromUtf8(contentOf(specimen))},
                            {u"FundCodeLibelle"_s, u"Régime général"_s}};
        QCOMPARE(service.ask("vitale_read"_L1), std::optional(card));
        QCOMPARE(service.finish(), 0);
        QCOMPARE(service.process().readAllStandardError(), QByteArray());
    }

    void withoutASimulatedCardItHasNoReader()
    {
        Service service({});
        QVERIFY(service.ask("init"_L1, {{u"Mode"_s, u"0"_s}}).has_value());
        const QCborMap reply = service.ask("readers_list"_L1).value_or(QCborMap());
        QCOMPARE(reply.value(ServiceWord::status).toString(), u"success"_s);
        QCOMPARE(reply.value(ServiceWord::readers), QCborValue(QCborArray()));
        QCOMPARE(service.finish(), 0);
    }

    void aCardThatIsTakenOutAndPutBackIsReadAgain()
    {
        const QTemporaryDir folder;
        const QString card = folder.filePath(u"carte.xml"_s);
        Service service({u"--simulate"_s, card});
        QVERIFY(service.bind());
        const QCborMap absent{{u"Status"_s, u"error"_s}, {u"Result"_s, 11}};
        QCOMPARE(service.ask("vitale_read"_L1), std::optional(absent));
        QVERIFY(QFile::copy(specimen, card));
        QCOMPARE(service.ask("vitale_read"_L1).value_or(QCborMap()).value(ServiceWord::status),
                 QCborValue(u"success"_s));
        QVERIFY(QFile::remove(card));
        QCOMPARE(service.ask("vitale_read"_L1), std::optional(absent));
        QCOMPARE(service.finish(), 0);
    }

    void aBrokenCardIsAReadErrorAndIsNotPrinted()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"carte.xml"_s);
        QVERIFY(writeFile(path, contentOf(specimen).chopped(10)));
        Service service({u"--simulate"_s, path});
        QVERIFY(service.bind());
        const QCborMap broken{{u"Status"_s, u"error"_s}, {u"Result"_s, 17}};
        QCOMPARE(service.ask("vitale_read"_L1), std::optional(broken));
        QCOMPARE(service.finish(), 0);
        QCOMPARE(service.process().readAllStandardError(), QByteArray());
    }

    void theSitesFundsAreUsedAndItsBadLinesReported()
    {
        const QTemporaryDir folder;
        const QString site = folder.filePath(u"MORVEL/caisses.csv"_s);
        QVERIFY(writeFile(site, "01;751;Caisse de test\noups\n"));
        QProcessEnvironment environment = withoutASite();
        environment.insert(u"XDG_CONFIG_HOME"_s, folder.path());
        Service service({u"--simulate"_s, specimen}, environment);
        QVERIFY(service.bind());
        QCOMPARE(service.ask("vitale_read"_L1).value_or(QCborMap()).value(ServiceWord::fundCodeLibelle),
                 QCborValue(u"Caisse de test"_s));
        QCOMPARE(service.finish(), 0);
        const QByteArray expected = "com.morvel.lvit: " + QFile::encodeName(site) +
                                    ", ligne 2 : ligne ignorée, « régime;caisse;libellé » attendu.\n";
        QCOMPARE(service.process().readAllStandardError(), expected);
    }

    void afterTheStartStandardOutputIsNotTheChannel()
    {
        Service service({u"--simulate"_s, specimen});
        QVERIFY(service.bind());
        const QString descriptors = u"/proc/%1/fd/"_s.arg(service.process().processId());
        // A process without core dumps belongs to root in /proc and hides its descriptors.
        if (coresAreForbidden() && ::geteuid() != 0) {
            QCOMPARE(QFileInfo(descriptors).ownerId(), 0u);
            return;
        }
        QCOMPARE(QFile::symLinkTarget(descriptors + u'1'), QFile::symLinkTarget(descriptors + u'2'));
        QCOMPARE(QFile::symLinkTarget(descriptors + u'0'), u"/dev/null"_s);
        // A library might print.
        QFile chatter(descriptors + u'1');
        QVERIFY(chatter.open(QIODevice::WriteOnly));
        QVERIFY(chatter.write("bavardage\n") > 0);
        chatter.close();
        QVERIFY(service.ask("readers_list"_L1).has_value());
        QCOMPARE(service.finish(), 0);
        QCOMPARE(service.process().readAllStandardError(), QByteArray("bavardage\n"));
    }

    void theServiceMakesNoCoreDump()
    {
        Service service({});
        QVERIFY(service.ask("readers_list"_L1).has_value());
        const QString limitsFile = u"/proc/%1/limits"_s.arg(service.process().processId());
        const QList<QByteArray> limits = contentOf(limitsFile).split('\n');
        const auto core =
            std::ranges::find_if(limits, [](const QByteArray& line) { return line.startsWith("Max core"); });
        QVERIFY(core != limits.end());
        // A process that cannot raise a limit of 0 is made undumpable, and belongs to root in /proc.
        const bool isUndumpable = coresAreForbidden() && core->simplified() == "Max core file size 0 0 bytes";
        if (isUndumpable)
            QCOMPARE(QFileInfo(limitsFile).ownerId(), 0u);
        else
            QCOMPARE(core->simplified(), QByteArray("Max core file size 1 1 bytes"));
        QCOMPARE(service.finish(), 0);
    }

    void malformedInputEndsTheServiceWithALineOnStandardError()
    {
        Service service({});
        QCOMPARE(service.finish("\xFFgarbage"), 1);
        QCOMPARE(service.process().readAllStandardError(),
                 QByteArray("com.morvel.lvit: requête illisible sur le canal\n"));
        QCOMPARE(service.process().readAllStandardOutput(), QByteArray());
    }

    void anIncompleteRequestAtTheEndIsIgnored()
    {
        Service service({});
        const QCborMap request{{ServiceWord::command, ServiceWord::readersList}};
        QCOMPARE(service.finish(encodeServiceMessage({.number = 1, .body = request}).chopped(3)), 0);
        QCOMPARE(service.process().readAllStandardError(), QByteArray());
        QCOMPARE(service.process().readAllStandardOutput(), QByteArray());
    }

    void anUnknownRequestIsAnsweredWithNull()
    {
        Service service({});
        QCOMPARE(service.ask("eject"_L1), std::nullopt);
        QVERIFY(service.ask("readers_list"_L1).has_value());
        QCOMPARE(service.finish(), 0);
    }

    void aClosedOutputEndsTheServiceWithoutAnError()
    {
        const QCborMap body{{ServiceWord::command, ServiceWord::readersList}};
        const QByteArray request = encodeServiceMessage({.number = 1, .body = body});
        std::array<int, 2> in{-1, -1};
        std::array<int, 2> out{-1, -1};
        QCOMPARE(::pipe2(in.data(), O_CLOEXEC), 0);
        QCOMPARE(::pipe2(out.data(), O_CLOEXEC), 0);
        const FileDescriptor requests(in[1]);
        posix_spawn_file_actions_t actions{};
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
        QByteArray path = QFile::encodeName(program);
        std::array<char*, 2> arguments{path.data(), nullptr};
        pid_t child = -1;
        QCOMPARE(::posix_spawn(&child, path.constData(), &actions, nullptr, arguments.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        for (const int end : {in[0], out[0], out[1]})
            ::close(end);
        QCOMPARE(::write(requests.get(), request.constData(), static_cast<std::size_t>(request.size())),
                 request.size());
        int status = -1;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
    }

    void helpAndVersionGoToStandardOutput()
    {
        const Run help = runWith({u"--help"_s});
        QCOMPARE(help.exitCode, 0);
        QVERIFY(help.output.contains("--simulate CARTE.xml"));
        QCOMPARE(help.errors, QByteArray());
        const Run version = runWith({u"--version"_s});
        QCOMPARE(version.exitCode, 0);
        QCOMPARE(version.output, QByteArray("com.morvel.lvit " PELMORA_VERSION "\n"));
    }

    void wrongUsagePrintsOneFrenchLineAndExitsWith2()
    {
        const Run run = runWith({u"--simuler"_s});
        QCOMPARE(run.exitCode, 2);
        QCOMPARE(run.output, QByteArray());
        QCOMPARE(run.errors, QByteArray("com.morvel.lvit: argument inconnu : --simuler (voir --help)\n"));
    }
};

template class RunnableTests<tst_CardService, QCoreApplication>;
#include "tst_cardservice.moc"
