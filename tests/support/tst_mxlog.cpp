#include "support/MXLog.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

#include <vector>

#include <pty.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

struct Line
{
    unsigned level;
    std::string text;

    friend bool operator==(const Line&, const Line&) = default;
};

// A logger that records its lines.
class RecordingLog
{
public:
    RecordingLog()
    {
        log.setLineWriter(
            [this](MXLog::Level level, std::string_view line) { lines.emplace_back(level, std::string(line)); });
    }

    MXLog log;
    std::vector<Line> lines;
};

std::vector<std::string> dumped(const QByteArray& bytes)
{
    RecordingLog recording;
    recording.log.setLogLevel(6);
    recording.log.dumpArguments(MXLog::Debug, std::as_bytes(std::span(bytes.constData(), std::size_t(bytes.size()))),
                                "header", {});
    std::vector<std::string> texts;
    for (const Line& line : recording.lines)
        texts.push_back(line.text);
    return texts;
}

} // namespace

class tst_MXLog : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aNewLoggerHasTheThresholdFive() { QCOMPARE(MXLog().logLevel(), 5U); }

    void aMessageIsWrittenWhenTheThresholdIsItsLevelOrMore()
    {
        for (unsigned threshold = 0; threshold <= 7; ++threshold) {
            for (const MXLog::Level level :
                 {MXLog::Severe, MXLog::Error, MXLog::Warning, MXLog::Info, MXLog::Notice, MXLog::Debug}) {
                RecordingLog recording;
                recording.log.setLogLevel(threshold);
                recording.log.log(level, "text");
                QCOMPARE(!recording.lines.empty(), threshold >= level);
            }
        }
    }

    void aThresholdAboveSevenSilencesTheLogger()
    {
        RecordingLog recording;
        for (const unsigned threshold : {8U, 100U, 4294967295U}) {
            recording.log.setLogLevel(threshold);
            QCOMPARE(recording.log.logLevel(), 0U);
            recording.log.log(MXLog::Severe, "text");
        }
        QVERIFY(recording.lines.empty());
    }

    void theSixOperationsHaveTheSixLevels()
    {
        std::vector<Line> lines;
        MXLog& log = MXLog::defaultLogger();
        log.setLineWriter(
            [&lines](MXLog::Level level, std::string_view line) { lines.emplace_back(level, std::string(line)); });
        log.setLogLevel(7);
        MXLog::logSevere("{}", 1);
        MXLog::logError("{}", 2);
        MXLog::logWarning("{}", 3);
        MXLog::logInfo("{}", 4);
        MXLog::logNotice("{}", 5);
        MXLog::logDebug("{}", 6);
        const QByteArray data("A");
        MXLog::logDump(reinterpret_cast<const std::byte*>(data.constData()), 0, "{}", 7);
        MXLog::logData(data, "{}", 8);
        MXLog::logData(std::nullopt, "{}", 9);
        log.setLineWriter([](MXLog::Level /*level*/, std::string_view /*line*/) {});
        const std::vector<Line> expected{
            {1, "1"}, {2, "2"}, {3, "3"},
            {4, "4"}, {5, "5"}, {6, "6"},
            {6, "7"}, {6, "8"}, {6, "|41" + std::string(46, ' ') + "|A" + std::string(15, ' ') + "|\n"}};
        QVERIFY(lines == expected);
    }

    void atTheDefaultThresholdNeitherDebugMessagesNorDumpsAreWritten()
    {
        RecordingLog recording;
        recording.log.log(MXLog::Debug, "text");
        const std::byte byte{1};
        recording.log.dumpArguments(MXLog::Debug, {&byte, 1}, "header", {});
        QVERIFY(recording.lines.empty());
    }

    void aMessageIsNeverUsedAsAFormat()
    {
        RecordingLog recording;
        recording.log.log(MXLog::Error, "{}", "{} {0} %s %n");
        QCOMPARE(recording.lines.front().text, std::string("{} {0} %s %n"));
    }

    void textsOfQtAreWrittenInUtf8()
    {
        RecordingLog recording;
        recording.log.log(MXLog::Error, "{} {}", u"Zoé"_s, QStringList{u"a"_s, u"b"_s});
        QCOMPARE(recording.lines.front().text, std::string("Zoé (a, b)"));
    }

    void aDumpOfNothingWritesOnlyTheHeader() { QVERIFY(dumped("") == std::vector<std::string>{"header"}); }

    void aDumpOfSixteenBytesIsOneLine()
    {
        const std::vector<std::string> expected{
            "header", "|30 31 32 33 34 35 36 37 38 39 41 42 43 44 45 46 |0123456789ABCDEF|\n"};
        QVERIFY(dumped("0123456789ABCDEF") == expected);
    }

    void aSeventeenthByteStandsAloneOnAPaddedLine()
    {
        const std::vector<std::string> lines = dumped("0123456789ABCDEFG");
        QCOMPARE(lines.size(), std::size_t{3});
        QCOMPARE(lines[2], "|47 " + std::string(45, ' ') + "|G" + std::string(15, ' ') + "|\n");
    }

    void bytesFromTheSpaceTo128AreCopiedUnchanged()
    {
        const std::vector<std::string> lines = dumped(QByteArray("\x1F\x20\x7E\x7F\x80\x81\xFF\x00", 8));
        QCOMPARE(lines[1],
                 "|1F 20 7E 7F 80 81 FF 00 " + std::string(24, ' ') + "|. ~\x7F\x80..." + std::string(8, ' ') + "|\n");
    }

    void eachLineIsWrittenCompletelyToATerminalOnStandardError()
    {
        int terminal = -1;
        int screen = -1;
        QCOMPARE(openpty(&terminal, &screen, nullptr, nullptr, nullptr), 0);
        const int before = dup(STDERR_FILENO);
        QVERIFY(dup2(screen, STDERR_FILENO) >= 0);
        MXLog().log(MXLog::Notice, "une ligne {}", 7);
        QVERIFY(dup2(before, STDERR_FILENO) >= 0);

        std::array<char, 100> shown{};
        const ssize_t count = read(terminal, shown.data(), shown.size());
        for (const int descriptor : {before, terminal, screen})
            ::close(descriptor);
        // The terminal converts a line feed to two characters.
        QCOMPARE(QByteArray(shown.data(), std::max<ssize_t>(count, 0)), QByteArray("une ligne 7\r\n"));
    }

    void nothingIsWrittenToAStandardErrorThatIsNotATerminal()
    {
        std::array<int, 2> ends{};
        QCOMPARE(pipe(ends.data()), 0);
        const int before = dup(STDERR_FILENO);
        QVERIFY(dup2(ends[1], STDERR_FILENO) >= 0);
        MXLog().log(MXLog::Notice, "une ligne");
        QVERIFY(dup2(before, STDERR_FILENO) >= 0);
        ::close(before);
        ::close(ends[1]);
        char shown = 0;
        QCOMPARE(read(ends[0], &shown, 1), ssize_t{0});
        ::close(ends[0]);
    }
};

template class RunnableTests<tst_MXLog, void>;
#include "tst_mxlog.moc"
