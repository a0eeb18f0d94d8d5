#include "service/embedded/CardFiles.h"
#include "tests/service/embedded/ScriptedTransport.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Bytes = std::expected<QByteArray, CardFault>;
using Answers = QList<ScriptedTransport::Answer>;

const QByteArray application = QByteArray::fromHex("F001");

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

class TestCardFiles : public QObject
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
        QVERIFY((CardFiles(channel).selectApplication(application) == std::expected<bool, CardFault>(isThere)));
        QCOMPARE(transport.commands(), QList<QByteArray>{"00A4040002F001"});
    }

    void aSelectedApplicationIsNotSelectedAgain()
    {
        ScriptedTransport transport({"9000", "6A82", "9000", "9000"});
        CardChannel channel(transport);
        CardFiles files(channel);
        QCOMPARE(files.selectApplication(application).value(), true);
        QCOMPARE(files.selectApplication(application).value(), true);
        QCOMPARE(files.selectApplication(QByteArray::fromHex("F002")).value(), false);
        // Whether a failed selection leaves the earlier one is not to be relied on.
        QCOMPARE(files.selectApplication(application).value(), true);
        files.startOver();
        QCOMPARE(files.selectApplication(application).value(), true);
        QCOMPARE(transport.commands().size(), 4);
    }

    void aFileIsReadFromItsFirstByteToItsEnd()
    {
        QVERIFY((readFileOf({"9000", "0102039000"}) == Read{QByteArray("\1\2\3"), {"00A40200022F02", "00B0000000"}}));
    }

    void aLongFileIsReadInBlocks()
    {
        QVERIFY((readFileOf({"9000", answer(block('a')), answer(block('b')), answer("c")}) ==
                 Read{block('a') + block('b') + "c", {"00A40200022F02", "00B0000000", "00B0010000", "00B0020000"}}));
    }

    void aFileMayEndWithAWholeBlock()
    {
        QVERIFY(readFileOf({"9000", answer(block('a')), "6B00"}).content == block('a'));
        QVERIFY(readFileOf({"9000", answer(block('a')), "9000"}).content == block('a'));
        QVERIFY(readFileOf({"9000", answer(block('a'), "6282")}).content == block('a'));
    }

    void aFileMayBeEmpty() { QVERIFY(readFileOf({"9000", "9000"}).content == QByteArray()); }

    void dataBeforeTheEndAreGood() { QVERIFY(readFileOf({"9000", "01026282"}).content == QByteArray("\1\2")); }

    void aRefusalIsARefusal_data()
    {
        QTest::addColumn<QList<QByteArray>>("answers");
        QTest::newRow("no such file") << QList<QByteArray>{"6A82"};
        QTest::newRow("protected") << QList<QByteArray>{"9000", "6982"};
        QTest::newRow("protected further on") << QList<QByteArray>{"9000", answer(block('a')), "6982"};
        QTest::newRow("beyond the end at once") << QList<QByteArray>{"9000", "6B00"};
    }

    void aRefusalIsARefusal()
    {
        QFETCH(QList<QByteArray>, answers);
        QVERIFY(readFileOf(Answers(answers.begin(), answers.end())).content == std::unexpected(CardFault::CardRefusal));
    }

    void aFileWithoutEndIsNonsense()
    {
        const Read read = readFileOf(Answers{"9000"} + Answers(1000, answer(block('a'))));
        QVERIFY(read.content == std::unexpected(CardFault::CardNonsense));
        QCOMPARE(read.commands.size(), 1 + 128);
        QCOMPARE(read.commands.last(), "00B07F0000");
    }

    void aCardThatLeavesIsNoRefusal()
    {
        const auto gone = std::unexpected(CardFault::CardGone);
        QVERIFY(readFileOf({gone}).content == gone);
        QVERIFY(readFileOf({"9000", answer(block('a')), gone}).content == gone);
    }
};

QTEST_GUILESS_MAIN(TestCardFiles)
#include "tst_cardfiles.moc"
