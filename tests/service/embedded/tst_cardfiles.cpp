#include "service/embedded/CardFiles.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/ScriptedTransport.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Bytes = std::expected<QByteArray, CardFault>;
using Answers = QList<ScriptedTransport::Answer>;

const QByteArray applicationName = QByteArray::fromHex("F001");

struct Read
{
    Bytes content;
    QList<QByteArray> commands;

    friend bool operator==(const Read&, const Read&) = default;
};

Read readFileOf(const Answers& answers)
{
    ScriptedTransport transport(answers);
    CardChannel channel(transport);
    Bytes content = CardFiles(channel).readFile(0x2F02);
    return {.content = std::move(content), .commands = transport.commands()};
}

QByteArray block(char filler, qsizetype size = 256)
{
    return QByteArray(size, filler);
}

QByteArray answer(const QByteArray& data, const char* status = "9000")
{
    return data.toHex() + status;
}

} // namespace

class tst_CardFiles : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void anApplicationIsSelectedByItsName_data()
    {
        QTest::addColumn<QByteArray>("status");
        QTest::addColumn<bool>("isThere");
        QTest::newRow("there") << QByteArray("9000") << true;
        QTest::newRow("there, with a warning") << QByteArray("6283") << true;
        QTest::newRow("not found") << QByteArray("6A82") << false;
        QTest::newRow("no such instruction") << QByteArray("6D00") << false;
        QTest::newRow("no such class") << QByteArray("6E00") << false;
    }

    void anApplicationIsSelectedByItsName()
    {
        QFETCH(QByteArray, status);
        QFETCH(bool, isThere);
        ScriptedTransport transport({status});
        CardChannel channel(transport);
        QVERIFY((CardFiles(channel).selectApplication(applicationName) == std::expected<bool, CardFault>(isThere)));
        QCOMPARE(transport.commands(), QList<QByteArray>{"00A4040002F001"});
    }

    void aSelectedApplicationIsNotSelectedAgain()
    {
        ScriptedTransport transport({"9000", "6A82", "9000", "9000"});
        CardChannel channel(transport);
        CardFiles files(channel);
        QCOMPARE(files.selectApplication(applicationName).value(), true);
        QCOMPARE(files.selectApplication(applicationName).value(), true);
        QCOMPARE(files.selectApplication(QByteArray::fromHex("F002")).value(), false);
        // After a failed selection, the earlier one may be lost.
        QCOMPARE(files.selectApplication(applicationName).value(), true);
        files.startOver();
        QCOMPARE(files.selectApplication(applicationName).value(), true);
        QCOMPARE(transport.commands().size(), 4);
    }

    void aFileIsReadFromItsFirstToItsLastByte()
    {
        QVERIFY((readFileOf({"9000", "0102039000", "9000"}) ==
                 Read{QByteArray("\1\2\3"), {"00A40200022F02", "00B0000000", "00B0000300"}}));
    }

    void aLongFileIsReadInBlocks()
    {
        QVERIFY((readFileOf({"9000", answer(block('a')), answer(block('b')), answer("c"), "6B00"}) ==
                 Read{block('a') + block('b') + "c",
                      {"00A40200022F02", "00B0000000", "00B0010000", "00B0020000", "00B0020100"}}));
    }

    void aShortBlockIsNotTheEndOfTheFile_data()
    {
        QTest::addColumn<qsizetype>("most");
        for (const qsizetype most : {1, 64, 100, 128, 192, 240, 255, 256})
            QTest::addRow("%lld bytes at a time", static_cast<long long>(most)) << most;
    }
    void aShortBlockIsNotTheEndOfTheFile()
    {
        QFETCH(const qsizetype, most);
        QByteArray content;
        for (int number = 0; number < 700; ++number)
            content += static_cast<char>(number % 251);
        Answers answers{"9000"};
        for (qsizetype offset = 0; offset < content.size(); offset += most)
            answers << answer(content.mid(offset, most));
        for (const char* end : {"9000", "6B00"})
            QVERIFY(readFileOf(answers + Answers{end}).content == content);
    }

    void aFileMayEndWithAWholeBlock()
    {
        QVERIFY(readFileOf({"9000", answer(block('a')), "6B00"}).content == block('a'));
        QVERIFY(readFileOf({"9000", answer(block('a')), "9000"}).content == block('a'));
        QVERIFY(readFileOf({"9000", answer(block('a'), "6282")}).content == block('a'));
    }

    void aFileMayBeEmpty()
    {
        QVERIFY(readFileOf({"9000", "9000"}).content == QByteArray());
        QVERIFY(readFileOf({"6F04800200009000", "6B00"}).content == QByteArray());
    }

    void dataSentWithTheEndOfFileStatusAreUsed()
    {
        QVERIFY(readFileOf({"9000", "01026282"}).content == QByteArray("\1\2"));
    }

    void aFileMustHaveTheSizeGivenBySelect_data()
    {
        QTest::addColumn<QByteArray>("selection");
        QTest::addColumn<bool>("isWhole");
        QTest::newRow("control information") << QByteArray("6F0480020003") << true;
        QTest::newRow("control parameters") << QByteArray("620780020003C50107") << true;
        QTest::newRow("parameters within information") << QByteArray("6F06620480020003") << true;
        QTest::newRow("one byte") << QByteArray("6203800103") << true;
        QTest::newRow("four bytes") << QByteArray("6206800400000003") << true;
        QTest::newRow("among others") << QByteArray("620A82010183022F02800103") << true;
        QTest::newRow("less") << QByteArray("6F0480020002") << false;
        QTest::newRow("more") << QByteArray("6F0480020004") << false;
        QTest::newRow("far more") << QByteArray("62068004FFFFFFFF") << false;
        QTest::newRow("none at all") << QByteArray("6F00") << true;
        QTest::newRow("without a number") << QByteArray("6F028000") << true;
        QTest::newRow("no objects") << QByteArray("6F04") << true;
    }
    void aFileMustHaveTheSizeGivenBySelect()
    {
        QFETCH(const QByteArray, selection);
        QFETCH(const bool, isWhole);
        const Bytes expected = isWhole ? Bytes(QByteArray("\1\2\3")) : std::unexpected(CardFault::CardFileCut);
        for (const char* end : {"9000", "6B00"})
            QVERIFY(readFileOf({selection + "9000", "0102039000", end}).content == expected);
        QVERIFY(readFileOf({selection + "9000", "0102036282"}).content == expected);
    }

    void anyStatusEndsAFileOfTheRightSize_data()
    {
        QTest::addColumn<QByteArray>("status");
        for (const char* status : {"6A82", "6A86", "6A87", "6700"})
            QTest::newRow(status) << QByteArray(status);
    }
    void anyStatusEndsAFileOfTheRightSize()
    {
        QFETCH(const QByteArray, status);
        const Bytes refused = std::unexpected(CardFault::CardRefusal);
        QVERIFY(readFileOf({"6F04800200039000", "0102039000", status}).content == QByteArray("\1\2\3"));
        QVERIFY(readFileOf({"6F04800200049000", "0102039000", status}).content == refused);
        QVERIFY(readFileOf({"9000", "0102039000", status}).content == refused);
    }

    void moreDataThanRequestedAreAnError()
    {
        QVERIFY(readFileOf({"9000", answer(block('a', 257))}).content == std::unexpected(CardFault::CardNonsense));
    }

    void aRefusedCommandGivesARefusal_data()
    {
        QTest::addColumn<QList<QByteArray>>("answers");
        QTest::newRow("no such file") << QList<QByteArray>{"6A82"};
        QTest::newRow("protected") << QList<QByteArray>{"9000", "6982"};
        QTest::newRow("protected further on") << QList<QByteArray>{"9000", answer(block('a')), "6982"};
        QTest::newRow("beyond the end at once") << QList<QByteArray>{"9000", "6B00"};
        QTest::newRow("beyond the end at once, against its word") << QList<QByteArray>{"6F04800200039000", "6B00"};
    }

    void aRefusedCommandGivesARefusal()
    {
        QFETCH(QList<QByteArray>, answers);
        QVERIFY(readFileOf(Answers(answers.begin(), answers.end())).content == std::unexpected(CardFault::CardRefusal));
    }

    void aFileWithoutEndIsAnError()
    {
        const Read read = readFileOf(Answers{"9000"} + Answers(1000, answer(block('a'))));
        QVERIFY(read.content == std::unexpected(CardFault::CardNonsense));
        QCOMPARE(read.commands.size(), 1 + 128);
        QCOMPARE(read.commands.last(), "00B07F0000");
    }

    void aFileCanHaveTheLargestOffset()
    {
        const Answers answers = Answers{"6F04800280009000"} + Answers(128, answer(block('a')));
        QVERIFY(readFileOf(answers).content == QByteArray(0x8000, 'a'));
    }

    void aRemovedCardIsNotReportedAsARefusal()
    {
        const auto gone = std::unexpected(CardFault::CardGone);
        QVERIFY(readFileOf({gone}).content == gone);
        QVERIFY(readFileOf({"9000", answer(block('a')), gone}).content == gone);
    }
};

template class RunnableTests<tst_CardFiles, QCoreApplication>;
#include "tst_cardfiles.moc"
