#include "card/wire/CardReaderState.h"
#include "card/wire/ServiceMessage.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_CardReaderState : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void eachStateHasItsOwnMessage()
    {
        QSet<QString> words;
        for (const CardReaderStateRow& row : cardReaderStates) {
            ServiceMessageReader reader(ServiceWord::replyKeys);
            reader.append(encodeServiceMessage({.number = 0, .body = readerMessage(row.state)}));
            const auto message = reader.next();
            QVERIFY(message && *message && (*message)->body);
            QCOMPARE(readerStateOf(*(*message)->body), row.state);
            words.insert(row.word);
        }
        QCOMPARE(words.size(), qsizetype(cardReaderStates.size()));
    }

    void otherMessagesContainNoState_data()
    {
        QTest::addColumn<QCborMap>("message");
        QTest::newRow("empty") << QCborMap();
        QTest::newRow("other event") << QCborMap{{u"Event"_s, u"something"_s}, {u"State"_s, u"card"_s}};
        QTest::newRow("no event") << QCborMap{{u"State"_s, u"card"_s}};
        QTest::newRow("no state") << QCborMap{{u"Event"_s, u"reader"_s}};
        QTest::newRow("unknown word") << QCborMap{{u"Event"_s, u"reader"_s}, {u"State"_s, u"on fire"_s}};
        QTest::newRow("number") << QCborMap{{u"Event"_s, u"reader"_s}, {u"State"_s, 4}};
        QTest::newRow("bytes") << QCborMap{{u"Event"_s, u"reader"_s}, {u"State"_s, QByteArray("card")}};
    }

    void otherMessagesContainNoState()
    {
        QFETCH(QCborMap, message);
        QCOMPARE(readerStateOf(message), std::nullopt);
    }
};

template class RunnableTests<tst_CardReaderState, QCoreApplication>;
#include "tst_cardreaderstate.moc"
