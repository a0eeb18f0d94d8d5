#include "service/embedded/CardChannel.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/ScriptedTransport.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Reply = std::expected<CardReply, CardFault>;
using Answers = QList<ScriptedTransport::Answer>;

const QByteArray readBlock = QByteArray::fromHex("00B0000000");

CardReply reply(const char* data, quint16 status = 0x9000)
{
    return {.data = QByteArray::fromHex(data), .status = status};
}

struct Exchange
{
    Reply reply;
    QList<QByteArray> commands;

    friend bool operator==(const Exchange&, const Exchange&) = default;
};

Exchange exchangeWith(const Answers& answers, const QByteArray& command = readBlock)
{
    ScriptedTransport transport(answers);
    CardChannel channel(transport);
    Reply reply = channel.exchange(command);
    return {.reply = std::move(reply), .commands = transport.commands()};
}

} // namespace

class tst_CardChannel : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void anAnswerIsItsDataAndItsStatus()
    {
        QVERIFY((exchangeWith({"01029000"}) == Exchange{reply("0102"), {"00B0000000"}}));
        QVERIFY((exchangeWith({"6A82"}) == Exchange{reply("", 0x6A82), {"00B0000000"}}));
    }

    void anAnswerWithoutAStatusIsAnError()
    {
        QVERIFY(exchangeWith({"90"}).reply == std::unexpected(CardFault::CardNonsense));
        QVERIFY(exchangeWith({""}).reply == std::unexpected(CardFault::CardNonsense));
    }

    void dataKeptByTheCardAreFetched()
    {
        QVERIFY((exchangeWith({"6103", "0102039000"}) == Exchange{reply("010203"), {"00B0000000", "00C0000003"}}));
    }

    void dataKeptByTheCardAreFetchedInParts()
    {
        QVERIFY((exchangeWith({"016102", "02036101", "049000"}) ==
                 Exchange{reply("01020304"), {"00B0000000", "00C0000002", "00C0000001"}}));
    }

    void theLengthOfAPartMayBeCorrected()
    {
        QVERIFY((exchangeWith({"6108", "6C02", "01029000"}) ==
                 Exchange{reply("0102"), {"00B0000000", "00C0000008", "00C0000002"}}));
    }

    void aCommandIsSentAgainWithTheCorrectedLength()
    {
        QVERIFY((exchangeWith({"6C02", "01029000"}) == Exchange{reply("0102"), {"00B0000000", "00B0000002"}}));
    }

    void aCommandKeepsItsDataWhenItsLengthIsCorrected()
    {
        QVERIFY((exchangeWith({"6C02", "01029000"}, QByteArray::fromHex("00A4040002AABB00")) ==
                 Exchange{reply("0102"), {"00A4040002AABB00", "00A4040002AABB02"}}));
    }

    void aCorrectedLengthIsIgnoredWhenNoDataAreExpected()
    {
        QVERIFY((exchangeWith({"6C02"}, QByteArray::fromHex("00A4040002AABB")) ==
                 Exchange{reply("", 0x6C02), {"00A4040002AABB"}}));
        QVERIFY((exchangeWith({"6C02"}, QByteArray::fromHex("00A40000")) == Exchange{reply("", 0x6C02), {"00A40000"}}));
    }

    void aLengthIsCorrectedOnlyOnce()
    {
        QVERIFY((exchangeWith({"6C02", "6C03"}) == Exchange{reply("", 0x6C03), {"00B0000000", "00B0000002"}}));
    }

    void aCardThatAnnouncesMoreDataWithoutSendingAnyIsAnError()
    {
        QVERIFY((exchangeWith({"6110", "6110"}) ==
                 Exchange{std::unexpected(CardFault::CardNonsense), {"00B0000000", "00C0000010"}}));
    }

    void theLengthOfAnAnswerIsBounded()
    {
        const QByteArray part = QByteArray(256, 'x').toHex() + "6100";
        const Exchange exchange = exchangeWith(Answers(1000, part));
        QVERIFY(exchange.reply == std::unexpected(CardFault::CardEndless));
        QCOMPARE(exchange.commands.size(), CardChannel::mostBytes / 258 + 1);
    }

    void theNumberOfCommandsIsBounded()
    {
        ScriptedTransport transport(Answers(3000, "6A82"));
        CardChannel channel(transport);
        for (int number = 0; number < CardChannel::mostCommands; ++number)
            QVERIFY(channel.exchange(readBlock));
        for (int number = 0; number < 3; ++number)
            QVERIFY(channel.exchange(readBlock) == std::unexpected(CardFault::CardEndless));
        QCOMPARE(transport.commands().size(), CardChannel::mostCommands);
    }

    void aFaultOfTheTransportIsReturned()
    {
        const auto gone = std::unexpected(CardFault::CardGone);
        QVERIFY(exchangeWith({gone}).reply == gone);
        QVERIFY(exchangeWith({"6102", gone}).reply == gone);
        QVERIFY(exchangeWith({"6C02", gone}).reply == gone);
    }

    void hasAnsweredIsTrueAfterTheFirstAnswer()
    {
        ScriptedTransport transport({std::unexpected(CardFault::CardGone), "6A82"});
        CardChannel channel(transport);
        QVERIFY(!channel.hasAnswered());
        QVERIFY(!channel.exchange(readBlock));
        QVERIFY(!channel.hasAnswered());
        QVERIFY(channel.exchange(readBlock));
        QVERIFY(channel.hasAnswered());
    }
};

template class RunnableTests<tst_CardChannel, QCoreApplication>;
#include "tst_cardchannel.moc"
