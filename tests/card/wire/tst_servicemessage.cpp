#include "card/wire/ServiceMessage.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCborArray>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QtTest>

#include <initializer_list>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype limit = ServiceMessageReader::maximumItemSize;

/// The messages of a complete stream, and its failure.
struct Outcome
{
    QList<ServiceMessage> messages;
    std::optional<FramingError> failure;
};

void drain(ServiceMessageReader& reader, Outcome& outcome)
{
    while (true) {
        const auto next = reader.next();
        if (!next) {
            outcome.failure = next.error();
            return;
        }
        if (!*next)
            return;
        outcome.messages.append(**next);
    }
}

Outcome readAll(QByteArrayView bytes, qsizetype slice = std::numeric_limits<qsizetype>::max())
{
    ServiceMessageReader reader;
    Outcome outcome;
    for (qsizetype start = 0; start < bytes.size() && !outcome.failure; start += slice) {
        reader.append(bytes.sliced(start, std::min(slice, bytes.size() - start)));
        drain(reader, outcome);
        if (slice > bytes.size())
            break;
    }
    return outcome;
}

/// [1, {"k": text of the given size}], without its last `missing` bytes.
QByteArray messageWithText(qsizetype textSize, qsizetype missing = 0)
{
    const QCborMap body{{u"k"_s, QString(textSize, u'x')}};
    QByteArray item = encodeServiceMessage({.number = 1, .body = body});
    item.chop(missing);
    return item;
}

} // namespace

class tst_ServiceMessage : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aMessageIsAnArrayOfItsNumberAndItsBody()
    {
        QCOMPARE(encodeServiceMessage({.number = 1, .body = std::nullopt}), QByteArray::fromHex("8201f6"));
        QCOMPARE(encodeServiceMessage({.number = 0, .body = QCborMap{}}), QByteArray::fromHex("8200a0"));
        const QCborMap body{{u"Command"_s, u"init"_s}};
        QCOMPARE(encodeServiceMessage({.number = 500, .body = body}), QByteArray::fromHex("821901f4a1") + "\x67"
                                                                                                          "Command"
                                                                                                          "\x64"
                                                                                                          "init");
    }

    void anEncodedMessageIsDecodedUnchanged_data()
    {
        QTest::addColumn<qint64>("number");
        QTest::addColumn<bool>("isMap");
        QTest::addColumn<QCborMap>("body");

        QTest::newRow("request") << qint64{1} << true << QCborMap{{u"Command"_s, u"init"_s}, {u"Mode"_s, u"0"_s}};
        QTest::newRow("reply") << qint64{2} << true
                               << QCborMap{{u"Status"_s, u"success"_s},
                                           {u"Readers"_s, QCborArray{u"Lecteur é"_s, u"Feitian SCR301"_s}},
                                           {u"Result"_s, -25}};
        QTest::newRow("byte string") << qint64{3} << true << QCborMap{{u"Vitale"_s, QByteArray("\xE9\xFF")}};
        QTest::newRow("unsolicited, empty") << qint64{0} << true << QCborMap{};
        QTest::newRow("null") << qint64{4} << false << QCborMap{};
        QTest::newRow("the largest number") << std::numeric_limits<qint64>::max() << false << QCborMap{};
    }

    void anEncodedMessageIsDecodedUnchanged()
    {
        QFETCH(const qint64, number);
        QFETCH(const bool, isMap);
        QFETCH(const QCborMap, body);

        const std::optional<QCborMap> written = isMap ? std::optional(body) : std::nullopt;
        const Outcome outcome = readAll(encodeServiceMessage({.number = number, .body = written}));
        QVERIFY(!outcome.failure);
        QCOMPARE(outcome.messages.size(), 1);
        QCOMPARE(outcome.messages[0].number, number);
        QCOMPARE(outcome.messages[0].body, written);
    }

    void aStreamIsReadTheSameInSlicesOfAnySize_data()
    {
        QTest::addColumn<qsizetype>("slice");
        for (const qsizetype slice : {1, 2, 3, 7, 64, 1000, 65536})
            QTest::addRow("%lld", static_cast<long long>(slice)) << slice;
    }

    void aStreamIsReadTheSameInSlicesOfAnySize()
    {
        QFETCH(const qsizetype, slice);
        QByteArray stream;
        for (int number = 1; number <= 50; ++number) {
            const QCborMap body{{u"Text"_s, QString(number * 40, u'é')}, {u"Readers"_s, QCborArray{u"A"_s, u"B"_s}}};
            stream +=
                encodeServiceMessage({.number = number, .body = number % 3 == 0 ? std::nullopt : std::optional(body)});
        }
        const Outcome outcome = readAll(stream, slice);
        QVERIFY(!outcome.failure);
        QCOMPARE(outcome.messages.size(), 50);
        QByteArray again;
        for (const ServiceMessage& message : outcome.messages)
            again += encodeServiceMessage(message);
        QCOMPARE(again, stream);
    }

    void everyEncodingOfLengthsIsAccepted_data()
    {
        QTest::addColumn<QByteArray>("item");
        QTest::newRow("indefinite array") << QByteArray::fromHex("9f07a1616b6176ff");
        QTest::newRow("indefinite map") << QByteArray::fromHex("8207bf616b6176ff");
        QTest::newRow("text in parts") << QByteArray::fromHex("8207a1616b7f60617660ff");
        QTest::newRow("array length in one byte") << QByteArray::fromHex("980207a1616b6176");
        QTest::newRow("array length in eight bytes") << QByteArray::fromHex("9b000000000000000207a1616b6176");
        QTest::newRow("number in four bytes") << QByteArray::fromHex("821a00000007a1616b6176");
        QTest::newRow("map and text lengths in two bytes") << QByteArray::fromHex("8207b90001616b79000176");
    }

    void everyEncodingOfLengthsIsAccepted()
    {
        QFETCH(const QByteArray, item);
        const Outcome outcome = readAll(item, 1);
        QVERIFY(!outcome.failure);
        QCOMPARE(outcome.messages.size(), 1);
        QCOMPARE(outcome.messages[0].number, 7);
        QCOMPARE(outcome.messages[0].body, (QCborMap{{u"k"_s, u"v"_s}}));
    }

    void afterAMalformedItemTheReaderStaysFailed_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("text of a human") << QByteArray("hello, world\n");
        QTest::newRow("zeros") << QByteArray(16, '\0');
        QTest::newRow("an array of none") << QByteArray::fromHex("80");
        QTest::newRow("an array of one") << QByteArray::fromHex("8101");
        QTest::newRow("an array of three") << QByteArray::fromHex("8301a0a0");
        QTest::newRow("an indefinite array of one") << QByteArray::fromHex("9f01ff");
        QTest::newRow("an indefinite array of three") << QByteArray::fromHex("9f01a0a0ff");
        QTest::newRow("a long length of three") << QByteArray::fromHex("980301a0a0");
        QTest::newRow("a map") << QByteArray::fromHex("a101a0");
        QTest::newRow("a bare null") << QByteArray::fromHex("f6");
        QTest::newRow("a tagged pair") << QByteArray::fromHex("c18201a0");
        QTest::newRow("number: negative") << QByteArray::fromHex("8220a0");
        QTest::newRow("number: text") << QByteArray::fromHex("826131a0");
        QTest::newRow("number: float") << QByteArray::fromHex("82f93c00a0");
        QTest::newRow("number: null") << QByteArray::fromHex("82f6a0");
        QTest::newRow("number: over 63 bits") << QByteArray::fromHex("821b8000000000000000a0");
        QTest::newRow("body: text") << QByteArray::fromHex("82016161");
        QTest::newRow("body: array") << QByteArray::fromHex("820180");
        QTest::newRow("body: undefined") << QByteArray::fromHex("8201f7");
        QTest::newRow("body: integer") << QByteArray::fromHex("820101");
        QTest::newRow("body: tagged map") << QByteArray::fromHex("8201c1a0");
        QTest::newRow("reserved argument") << QByteArray::fromHex("82011c");
        QTest::newRow("break outside of anything") << QByteArray::fromHex("8201ff");
        QTest::newRow("break in a definite map") << QByteArray::fromHex("8201a1616bff");
        QTest::newRow("indefinite map with a key alone") << QByteArray::fromHex("8201bf616bff");
        QTest::newRow("indefinite integer") << QByteArray::fromHex("821fa0");
        QTest::newRow("indefinite tag") << QByteArray::fromHex("8201a1616bdf");
        QTest::newRow("bytes within a text in parts") << QByteArray::fromHex("8201a1616b7f4161ff");
        QTest::newRow("text that is not UTF-8") << QByteArray::fromHex("8201a1616b62e920");
        QTest::newRow("100,000 levels") << QByteArray::fromHex("8201a1616b") + QByteArray(100'000, '\x81');
        QTest::newRow("100,000 tags") << QByteArray::fromHex("8201a1616b") + QByteArray(100'000, '\xc1');
    }

    void afterAMalformedItemTheReaderStaysFailed()
    {
        QFETCH(const QByteArray, bytes);
        const Outcome atOnce = readAll(bytes);
        QCOMPARE(atOnce.failure, FramingError::Malformed);
        QVERIFY(atOnce.messages.isEmpty());
        const Outcome dribbled = readAll(bytes, 1);
        QCOMPARE(dribbled.failure, FramingError::Malformed);
        QVERIFY(dribbled.messages.isEmpty());

        ServiceMessageReader reader;
        reader.append(bytes);
        QVERIFY(!reader.next());
        reader.append(encodeServiceMessage({.number = 1, .body = QCborMap{}}));
        const auto afterwards = reader.next();
        QVERIFY(!afterwards);
        QCOMPARE(afterwards.error(), FramingError::Malformed);
    }

    void messagesBeforeAMalformedItemAreDelivered()
    {
        const Outcome outcome = readAll(encodeServiceMessage({.number = 1, .body = QCborMap{}}) + "garbage");
        QCOMPARE(outcome.messages.size(), 1);
        QCOMPARE(outcome.failure, FramingError::Malformed);
    }

    void everyIncompleteItemNeedsMoreBytes()
    {
        const QByteArray item = encodeServiceMessage(
            {.number = 70'000,
             .body = QCborMap{{u"Vitale"_s, QString(300, u'x')}, {u"Readers"_s, QCborArray{u"A"_s, u"B"_s}}}});
        for (qsizetype size = 0; size < item.size(); ++size) {
            const Outcome outcome = readAll(item.first(size));
            QVERIFY2(!outcome.failure && outcome.messages.isEmpty(), qPrintable(QString::number(size)));
        }
    }

    void anItemOfTheMaximumSizeIsRead()
    {
        const qsizetype overhead = messageWithText(limit - 100).size() - (limit - 100);
        const QByteArray item = messageWithText(limit - overhead);
        QCOMPARE(item.size(), limit);
        const Outcome outcome = readAll(item, 65536);
        QVERIFY(!outcome.failure);
        QCOMPARE(outcome.messages.size(), 1);
        QCOMPARE(outcome.messages[0].body->value("k"_L1).toString().size(), limit - overhead);

        QCOMPARE(readAll(messageWithText(limit - overhead + 1)).failure, FramingError::TooLarge);
    }

    void anItemOverTheMaximumSizeIsRefusedAfterItsHead_data()
    {
        QTest::addColumn<QByteArray>("beginning");
        QTest::newRow("text of 5 MiB") << messageWithText(5 * 1024 * 1024, 5 * 1024 * 1024);
        QTest::newRow("text of nearly 2^64") << QByteArray::fromHex("8201a1616b7bffffffffffffffff");
        QTest::newRow("bytes of 2^63") << QByteArray::fromHex("8201a1616b5b8000000000000000");
        QTest::newRow("array of 2^32") << QByteArray::fromHex("8201a1616b9b0000000100000000");
        QTest::newRow("map of 2^63 pairs") << QByteArray::fromHex("8201bb8000000000000000");
        QTest::newRow("map of 5 million pairs") << QByteArray::fromHex("8201ba004c4b40");
    }

    void anItemOverTheMaximumSizeIsRefusedAfterItsHead()
    {
        QFETCH(const QByteArray, beginning);
        QVERIFY(beginning.size() < 100);
        QCOMPARE(readAll(beginning).failure, FramingError::TooLarge);
        QCOMPARE(readAll(beginning, 1).failure, FramingError::TooLarge);
    }

    void anItemThatGrowsBeyondTheMaximumSizeIsRefused()
    {
        const QByteArray endlessMap = QByteArray::fromHex("8201bf");
        const QByteArray pair = QByteArray::fromHex("616b6176").repeated(16384);
        ServiceMessageReader reader;
        reader.append(endlessMap);
        qsizetype given = endlessMap.size();
        auto next = reader.next();
        while (next && given < 2 * limit) {
            reader.append(pair);
            given += pair.size();
            next = reader.next();
        }
        QVERIFY(!next);
        QCOMPARE(next.error(), FramingError::TooLarge);
        QVERIFY(given <= limit + pair.size());
    }

    // With quadratic time, this test and the next one would take minutes instead of milliseconds.
    void manySmallMessagesInOneBufferAreReadInLinearTime()
    {
        const QByteArray stream = encodeServiceMessage({.number = 0, .body = QCborMap{}}).repeated(250'000);
        QElapsedTimer timer;
        timer.start();
        // The stream is read as a whole, then in slices that end inside messages.
        for (const qsizetype slice : {stream.size(), qsizetype{65536}}) {
            const Outcome outcome = readAll(stream, slice);
            QVERIFY(!outcome.failure);
            QCOMPARE(outcome.messages.size(), 250'000);
        }
        QVERIFY(timer.elapsed() < 20'000);
    }

    void aLargeItemReceivedInSmallSlicesIsReadInLinearTime()
    {
        constexpr int parts = 4000;
        constexpr int partSize = 1024;
        const QByteArray part = QByteArray::fromHex("790400") + QByteArray(partSize, 'x');
        const QByteArray item = QByteArray::fromHex("8201a1616b7f") + part.repeated(parts) + '\xff';
        QElapsedTimer timer;
        timer.start();
        const Outcome outcome = readAll(item, 16);
        QVERIFY(!outcome.failure);
        QCOMPARE(outcome.messages.size(), 1);
        QCOMPARE(outcome.messages[0].body->value("k"_L1).toString().size(), parts * partSize);
        QVERIFY(timer.elapsed() < 20'000);
    }
};

template class RunnableTests<tst_ServiceMessage, QCoreApplication>;

#include "tst_servicemessage.moc"
