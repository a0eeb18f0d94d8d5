#include "service/pcsc/CardFault.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int lastFault = static_cast<int>(CardFault::Unexpected);

} // namespace

class tst_CardFault : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void eachCodeGivesItsFault_data()
    {
        QTest::addColumn<long>("code");
        QTest::addColumn<CardFault>("fault");
        QTest::newRow("no service") << 0x8010001DL << CardFault::ServiceLost;
        QTest::newRow("connection to the service lost") << 0x80100013L << CardFault::ServiceLost;
        QTest::newRow("handle of an earlier service") << 0x80100003L << CardFault::ServiceLost;
        QTest::newRow("account refused") << 0x8010006AL << CardFault::ServiceForbidden;
        QTest::newRow("unknown reader") << 0x80100009L << CardFault::ReaderUnknown;
        QTest::newRow("reader unplugged") << 0x80100017L << CardFault::ReaderLost;
        QTest::newRow("exclusive use") << 0x8010000BL << CardFault::ReaderBusy;
        QTest::newRow("empty reader") << 0x8010000CL << CardFault::CardAbsent;
        QTest::newRow("no protocol") << 0x8010000FL << CardFault::CardSilent;
        QTest::newRow("mute, here") << 0x80100067L << CardFault::CardMute;
        QTest::newRow("mute, elsewhere") << 0x80100066L << CardFault::CardMute;
        QTest::newRow("removed") << 0x80100069L << CardFault::CardGone;
        QTest::newRow("not transacted") << 0x80100016L << CardFault::CardGone;
        QTest::newRow("reset") << 0x80100068L << CardFault::CardReset;
        QTest::newRow("answer too long") << 0x80100008L << CardFault::CardNonsense;
        QTest::newRow("internal error") << 0x80100001L << CardFault::Unexpected;
    }

    void eachCodeGivesItsFault()
    {
        QFETCH(long, code);
        QTEST(cardFault(code), "fault");
    }

    void everyFaultHasItsResultCode_data()
    {
        QTest::addColumn<CardFault>("fault");
        QTest::addColumn<ReadResult>("result");
        QTest::newRow("ServiceDown") << CardFault::ServiceDown << ReadResult::ReaderFault;
        QTest::newRow("ServiceForbidden") << CardFault::ServiceForbidden << ReadResult::ReaderFault;
        QTest::newRow("ServiceLost") << CardFault::ServiceLost << ReadResult::ReaderFault;
        QTest::newRow("ReaderUnknown") << CardFault::ReaderUnknown << ReadResult::ReaderFault;
        QTest::newRow("ReaderLost") << CardFault::ReaderLost << ReadResult::ReaderFault;
        QTest::newRow("ReaderBusy") << CardFault::ReaderBusy << ReadResult::ReaderFault;
        QTest::newRow("CardAbsent") << CardFault::CardAbsent << ReadResult::CardAbsent;
        QTest::newRow("CardSilent") << CardFault::CardSilent << ReadResult::CardAbsent;
        QTest::newRow("CardMute") << CardFault::CardMute << ReadResult::CardMute;
        QTest::newRow("CardGoneUnheard") << CardFault::CardGoneUnheard << ReadResult::CardChanged;
        QTest::newRow("CardGone") << CardFault::CardGone << ReadResult::CardChanged;
        QTest::newRow("CardSwapped") << CardFault::CardSwapped << ReadResult::CardChanged;
        QTest::newRow("CardReset") << CardFault::CardReset << ReadResult::CardChanged;
        QTest::newRow("CardOfOtherKind") << CardFault::CardOfOtherKind << ReadResult::ReadError;
        QTest::newRow("CardRefusal") << CardFault::CardRefusal << ReadResult::ReadError;
        QTest::newRow("CardNonsense") << CardFault::CardNonsense << ReadResult::ReadError;
        QTest::newRow("Unexpected") << CardFault::Unexpected << ReadResult::ReaderFault;
    }

    void everyFaultHasItsResultCode()
    {
        QFETCH(CardFault, fault);
        QTEST(readResult(fault), "result");
    }

    void everyFaultHasItsOwnText()
    {
        QStringList texts;
        for (int fault = 0; fault <= lastFault; ++fault)
            texts.append(describe(static_cast<CardFault>(fault)));
        QVERIFY(!texts.contains(QString()));
        QCOMPARE(texts.removeDuplicates(), 0);
    }
};

template class RunnableTests<tst_CardFault, QCoreApplication>;
#include "tst_cardfault.moc"
