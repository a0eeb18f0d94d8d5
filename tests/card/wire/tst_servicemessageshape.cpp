#include "card/wire/ServiceMessage.h"
#include "card/wire/ServiceVocabulary.h"
#include "tests/card/wire/MemoryGrowth.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCborArray>
#include <QCoreApplication>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype sizeLimit = ServiceMessageReader::maximumItemSize;
constexpr qsizetype slice = qsizetype{64} * 1024;
constexpr int maximumItems = ServiceMessageScanner::maximumItems;

/// The number of messages in the bytes, or the failure.
QString outcomeOf(QByteArrayView bytes, qsizetype sliceSize, std::span<const QLatin1StringView> keys)
{
    ServiceMessageReader reader(keys);
    int count = 0;
    for (qsizetype start = 0; start < bytes.size(); start += sliceSize) {
        reader.append(bytes.sliced(start, std::min(sliceSize, bytes.size() - start)));
        while (true) {
            const auto next = reader.next();
            if (!next)
                return next.error() == FramingError::TooLarge ? u"too large"_s : u"malformed"_s;
            if (!*next)
                break;
            ++count;
        }
    }
    return u"%1 messages"_s.arg(count);
}

/// The same for the bytes as a whole and one by one; "differs" when the two results differ.
QString outcomeOf(QByteArrayView bytes, std::span<const QLatin1StringView> keys = ServiceWord::replyKeys)
{
    const QString atOnce = outcomeOf(bytes, std::max(bytes.size(), qsizetype{1}), keys);
    return outcomeOf(bytes, 1, keys) == atOnce ? atOnce : u"differs"_s;
}

QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

/// The beginning of [1, {"Readers": [numbers]}], with the given head of the list and that many numbers.
QByteArray listOf(const char* head, int numbers)
{
    return hex("8201a16752656164657273") + hex(head) + QByteArray(numbers, '\1');
}

} // namespace

/// The shapes that the client accepts before decoding a message.
class tst_ServiceMessageShape : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void everyMessageOfTheContractIsAccepted_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QCborMap all;
        for (const QLatin1StringView key : ServiceWord::replyKeys)
            all.insert(key, u"text"_s);
        QTest::newRow("every key") << encodeServiceMessage({.number = 1, .body = all});
        QTest::newRow("reader event") << encodeServiceMessage(
            {.number = 0, .body = QCborMap{{u"Event"_s, u"reader"_s}, {u"State"_s, u"card"_s}}});
        QTest::newRow("null") << hex("8201f6");
        QTest::newRow("an empty list") << listOf("80", 0);
        QTest::newRow("a list of every scalar") << listOf("88", 1) + hex("20 6161 4161 f4 f6 f7 f93c00");
        QTest::newRow("a value of every scalar") << hex("8201a5 66537461747573 01 66537461747573 20 66537461747573 f5 "
                                                        "66537461747573 40 66537461747573 fb3ff0000000000000");
        QTest::newRow("a text in parts in a list") << listOf("81", 0) + hex("7f 6161 6162 ff");
        QTest::newRow("bytes in parts in an endless list, map and message")
            << hex("9f01bf 6752656164657273 9f 5f 4161 4162 ff ff ff ff");
        QTest::newRow("a key's length in eight bytes") << hex("8201a1 7b0000000000000006 537461747573 60");
    }

    void everyMessageOfTheContractIsAccepted()
    {
        QFETCH(const QByteArray, bytes);
        QCOMPARE(outcomeOf(bytes), u"1 messages"_s);
        QCOMPARE(outcomeOf(bytes + bytes), u"2 messages"_s);
        QCOMPARE(outcomeOf(bytes.chopped(1)), u"0 messages"_s);
    }

    void aMessageOfAnotherShapeIsRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("an unknown key") << hex("8201a1 6553746174 7560");
        QTest::newRow("an unknown key after a known one") << hex("8201a2 66537461747573 60 6161 60");
        QTest::newRow("a key in another case") << hex("8201a1 66737461747573 60");
        QTest::newRow("the beginning of a key") << hex("8201a1 655374617475 60");
        QTest::newRow("a key and more") << hex("8201a1 6753746174757373 60");
        QTest::newRow("an empty key") << hex("8201a1 60 60");
        QTest::newRow("a key in bytes") << hex("8201a1 46537461747573 60");
        QTest::newRow("a key in parts") << hex("8201a1 7f 66537461747573 ff 60");
        QTest::newRow("a number for a key") << hex("8201a1 01 60");
        QTest::newRow("a list for a key") << hex("8201a1 80 60");
        QTest::newRow("a key alone") << hex("8201bf 66537461747573 ff");
        QTest::newRow("a map for a value") << hex("8201a1 6752656164657273 a0");
        QTest::newRow("a list in a list") << listOf("81", 0) + hex("80");
        QTest::newRow("a map in a list") << listOf("81", 0) + hex("a0");
        QTest::newRow("a break in a list of given length") << listOf("81", 0) + hex("ff");
        QTest::newRow("a part of bytes in a text") << listOf("81", 0) + hex("7f 4161 ff");
        QTest::newRow("a part in parts") << listOf("81", 0) + hex("7f 7f 6161 ff ff");
        QTest::newRow("a tagged message") << hex("c1 8201f6");
        QTest::newRow("a tagged number") << hex("82 c101 f6");
        QTest::newRow("a tagged body") << hex("8201 c1f6");
        QTest::newRow("a tagged key") << hex("8201a1 c1 66537461747573 60");
        QTest::newRow("a tagged value") << hex("8201a1 66537461747573 c1 60");
        QTest::newRow("a tagged element") << listOf("81", 0) + hex("c1 60");
        QTest::newRow("a tagged part") << listOf("81", 0) + hex("7f c1 6161 ff");
        QTest::newRow("null in two bytes") << hex("8201f816");
        QTest::newRow("a simple value in two bytes") << hex("8201a1 66537461747573 f816");
        QTest::newRow("a number over 63 bits") << hex("821b8000000000000000 f6");
        QTest::newRow("an endless message of one") << hex("9f01ff");
        QTest::newRow("an endless message of three") << hex("9f01f6f6ff");
    }

    void aMessageOfAnotherShapeIsRefused()
    {
        QFETCH(const QByteArray, bytes);
        QCOMPARE(outcomeOf(bytes), u"malformed"_s);
    }

    void aWrongShapeIsRefusedBeforeItsContentArrives_data()
    {
        QTest::addColumn<QByteArray>("beginning");
        QTest::newRow("a key that is too long") << hex("8201a1 7841");
        QTest::newRow("a key of 4 GiB") << hex("8201a1 7b0000000100000000");
        QTest::newRow("a map for a value") << hex("8201a1 6752656164657273 a1");
        QTest::newRow("a list in a list") << listOf("81", 0) + hex("99 0400");
        QTest::newRow("a tag") << hex("8201a1 66537461747573 c1");
    }

    void aWrongShapeIsRefusedBeforeItsContentArrives()
    {
        QFETCH(const QByteArray, beginning);
        QCOMPARE(outcomeOf(beginning), u"malformed"_s);
    }

    void withoutAListOfKeysAnyTextIsAccepted()
    {
        const QByteArray shortKeys = hex("8201a2 6161 60 60 60");
        QCOMPARE(outcomeOf(shortKeys, {}), u"1 messages"_s);
        QCOMPARE(outcomeOf(hex("8201a1 7840") + QByteArray(64, 'k') + hex("60"), {}), u"1 messages"_s);
        QCOMPARE(outcomeOf(hex("8201a1 7841") + QByteArray(65, 'k') + hex("60"), {}), u"malformed"_s);
    }

    void aMessageHasABoundedNumberOfItems_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("outcome");
        // The other items are the message, its number, the map, a key and the list.
        constexpr int others = 5;
        QTest::newRow("as many as may be") << listOf("990ffb", maximumItems - others) << u"1 messages"_s;
        QTest::newRow("one more") << listOf("990ffc", maximumItems - others + 1) << u"too large"_s;
        QTest::newRow("as many as may be, no length given")
            << listOf("9f", maximumItems - others) + hex("ff") << u"1 messages"_s;
        QTest::newRow("one more, no length given")
            << listOf("9f", maximumItems - others + 1) + hex("ff") << u"too large"_s;
        QTest::newRow("by the head of a list") << listOf("991001", 0) << u"too large"_s;
        QTest::newRow("by the head of a map") << hex("8201b91001") << u"too large"_s;
        const QByteArray inParts = hex("8201a1 66537461747573 7f");
        QTest::newRow("parts") << inParts + QByteArray("\x61x", 2).repeated(maximumItems - others) + hex("ff")
                               << u"1 messages"_s;
        QTest::newRow("one part more") << inParts + QByteArray("\x61x", 2).repeated(maximumItems - others + 1) +
                                              hex("ff")
                                       << u"too large"_s;
    }

    void aMessageHasABoundedNumberOfItems()
    {
        QFETCH(const QByteArray, bytes);
        QTEST(outcomeOf(bytes), "outcome");
    }

    void theMemoryForAMessageIsBounded_data()
    {
        QTest::addColumn<QByteArray>("beginning");
        QTest::addColumn<QByteArray>("unit"); // repeated until the message is full
        QTest::addColumn<QByteArray>("end");
        const QByteArray value = hex("8201a1 66537461747573");
        const QByteArray list = value + hex("9f");
        const QByteArray parts = value + hex("7f");
        const QByteArray oneEnd = hex("ff");
        QTest::newRow("tagged numbers") << list << hex("c101") << oneEnd;
        QTest::newRow("tagged texts") << list << hex("c160") << oneEnd;
        QTest::newRow("numbers") << list << hex("01") << oneEnd;
        QTest::newRow("empty texts") << list << hex("60") << oneEnd;
        QTest::newRow("texts") << list << hex("6178") << oneEnd;
        QTest::newRow("empty lists") << list << hex("80") << oneEnd;
        QTest::newRow("lists of one") << list << hex("8101") << oneEnd;
        QTest::newRow("empty maps") << list << hex("a0") << oneEnd;
        QTest::newRow("maps of one") << list << hex("a10101") << oneEnd;
        QTest::newRow("pairs") << hex("8201bf") << hex("66537461747573 60") << oneEnd;
        QTest::newRow("pairs with other keys") << hex("8201bf") << hex("6160 60") << oneEnd;
        QTest::newRow("empty parts") << parts << hex("60") << oneEnd;
        QTest::newRow("parts of one character") << parts << hex("6178") << oneEnd;
        QTest::newRow("parts of two kibibytes") << parts << hex("790800") + QByteArray(2048, 'x') << oneEnd;
        QTest::newRow("a text of ASCII") << value + hex("7a003fffc0") << QByteArray("x") << QByteArray();
        QTest::newRow("a text of two bytes a character")
            << value + hex("7a003fffc0") << QByteArray("é") << QByteArray();
        QTest::newRow("a byte string") << value + hex("5a003fffc0") << QByteArray("\xff") << QByteArray();
    }

    void theMemoryForAMessageIsBounded()
    {
        QFETCH(const QByteArray, beginning);
        QFETCH(const QByteArray, unit);
        QFETCH(const QByteArray, end);
        // The room that the strings above leave for the rest of the message.
        constexpr qsizetype room = sizeLimit - 64;
        const QByteArray wave = unit.repeated(slice / unit.size());
        const MemoryGrowth growth;

        ServiceMessageReader reader(ServiceWord::replyKeys);
        bool isRead = false;
        const auto take = [&reader, &isRead](QByteArrayView bytes) {
            reader.append(bytes);
            const auto next = reader.next();
            isRead = isRead || (next && *next);
            return next.has_value();
        };
        bool isGoingOn = take(beginning);
        for (qsizetype left = room / unit.size() * unit.size(); isGoingOn && left > 0;
             left -= std::min(left, wave.size()))
            isGoingOn = take(wave.first(std::min(left, wave.size())));
        if (isGoingOn)
            isGoingOn = take(end);
        QCOMPARE(isRead, isGoingOn);
        QCOMPARE(isRead, end.isEmpty() || unit.size() > 2048);
        const qint64 taken = growth.peak();
        QVERIFY2(taken >= 0 && taken < 64 * 1024, qPrintable(u"%1 KiB"_s.arg(taken)));
    }

    void deliveredMessagesUseNoMemory()
    {
        constexpr int count = 2000;
        const QByteArray message =
            encodeServiceMessage({.number = 0, .body = QCborMap{{u"Event"_s, QString(slice, u'x')}}});
        const MemoryGrowth growth;
        ServiceMessageReader reader(ServiceWord::replyKeys);
        int read = 0;
        // Each slice ends inside a message.
        for (QByteArray rest = message + message.first(100); read < count;
             rest = message.sliced(100) + message.first(100)) {
            reader.append(rest);
            const auto next = reader.next();
            QVERIFY(next && *next);
            ++read;
        }
        const qint64 taken = growth.peak();
        QVERIFY2(taken >= 0 && taken < 16 * 1024, qPrintable(u"%1 KiB"_s.arg(taken)));
    }
};

template class RunnableTests<tst_ServiceMessageShape, QCoreApplication>;

#include "tst_servicemessageshape.moc"
