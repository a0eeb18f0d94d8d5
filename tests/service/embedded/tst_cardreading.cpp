#include "service/embedded/CardDocument.h"
#include "service/embedded/CardReading.h"
#include "tests/service/embedded/FileCard.h"
#include "tests/service/embedded/SmallCard.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Document = std::expected<QString, CardFailure>;

// Selection, then each file's selection and content, then the selection and the first file once more.
constexpr int commandsOfARead = 1 + 2 + 2 + 1 + 2;

const std::vector<CardMap>& maps()
{
    static const std::vector<CardMap> maps{smallCardMap()};
    return maps;
}

Document documentOf(CardTransport& card, const std::vector<CardMap>& known = maps())
{
    CardChannel channel(card);
    return CardReading(channel, known).readDocument();
}

Document documentOf(CardContent files, FileCard::Event event = {})
{
    FileCard card(std::move(files), std::move(event));
    return documentOf(card);
}

std::optional<CardFault> faultIn(const Document& document)
{
    const CardFault* fault = document ? nullptr : std::get_if<CardFault>(&document.error());
    return fault == nullptr ? std::nullopt : std::optional(*fault);
}

/// What the log is told of damaged content; nothing when there is none.
QString damageIn(const Document& document)
{
    const auto* gap = document ? nullptr : std::get_if<CardGap>(&document.error());
    return gap != nullptr && gap->kind == CardGap::Kind::Damaged ? gap->explanation : QString();
}

QString expectedDocument(char letter)
{
    return cardDocument(maps().front(), smallCard(letter)).value();
}

CardContent without(CardContent files, quint16 file)
{
    files.erase(smallCardFile(file));
    return files;
}

CardContent bankCard()
{
    return {{{QByteArray::fromHex("A0000000421010"), 1}, "bank"}};
}

/// Something that happens before one of the commands.
FileCard::Event at(int number, const FileCard::Event& event)
{
    return [number, event](FileCard& card, int current) {
        return current == number ? event(card, current) : std::nullopt;
    };
}

FileCard::Event leavesAt(int number)
{
    return at(number, [](FileCard&, int) { return std::optional(CardFault::CardGone); });
}

FileCard::Event swappedAt(int number, const CardContent& other)
{
    return at(number, [other](FileCard& card, int) {
        card.swapFor(other);
        return std::optional<CardFault>();
    });
}

} // namespace

class TestCardReading : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theDocumentIsThatOfTheCardsFiles()
    {
        FileCard card(smallCard('A'));
        QVERIFY(documentOf(card) == Document(expectedDocument('A')));
        QCOMPARE(card.commands(), commandsOfARead);
    }

    void theFirstMapThatIsTheCardsIsUsed()
    {
        CardMap other = smallCardMap();
        other.application = QByteArray::fromHex("F0FF");
        FileCard card(smallCard('A'));
        QVERIFY(documentOf(card, {other, smallCardMap()}) == Document(expectedDocument('A')));
        QCOMPARE(card.commands(), commandsOfARead + 1);
    }

    void aCardOfNoMapIsOfAnotherKind()
    {
        QCOMPARE(faultIn(documentOf(bankCard())), CardFault::CardOfOtherKind);
        FileCard card(smallCard('A'));
        QCOMPARE(faultIn(documentOf(card, {})), CardFault::CardOfOtherKind);
    }

    void aCardThatLeavesBeforeItsFirstAnswerWasNotHeard()
    {
        QCOMPARE(faultIn(documentOf(smallCard('A'), leavesAt(1))), CardFault::CardGoneUnheard);
    }

    void aCardThatLeavesLaterIsGone()
    {
        for (int number = 2; number <= commandsOfARead; ++number)
            QCOMPARE(faultIn(documentOf(smallCard('A'), leavesAt(number))), CardFault::CardGone);
    }

    void anyFaultOnTheWayEndsTheRead()
    {
        for (const CardFault fault : {CardFault::CardReset, CardFault::ReaderLost, CardFault::ServiceLost}) {
            const FileCard::Event event = at(4, [fault](FileCard&, int) { return std::optional(fault); });
            QCOMPARE(faultIn(documentOf(smallCard('A'), event)), fault);
        }
    }

    void anotherCardThatTookItsPlaceUnnoticedIsNoticed()
    {
        QVERIFY(documentOf(smallCard('A'), swappedAt(1, smallCard('B'))) == Document(expectedDocument('B')));
        for (int number = 2; number <= commandsOfARead; ++number)
            QCOMPARE(faultIn(documentOf(smallCard('A'), swappedAt(number, smallCard('B')))), CardFault::CardSwapped);
    }

    void aCardOfAnotherKindThatTookItsPlaceIsNoticed()
    {
        QCOMPARE(faultIn(documentOf(smallCard('A'), swappedAt(1, bankCard()))), CardFault::CardOfOtherKind);
        for (int number = 2; number <= commandsOfARead; ++number)
            QCOMPARE(faultIn(documentOf(smallCard('A'), swappedAt(number, bankCard()))), CardFault::CardSwapped);
    }

    void aRefusedFileIsARefusalByTheSameCard()
    {
        for (const quint16 file : {quint16{1}, quint16{2}})
            QCOMPARE(damageIn(documentOf(without(smallCard('A'), file))),
                     u"plan « %1 » : la carte refuse le fichier « %2 »"_s.arg(maps().front().name,
                                                                              maps().front().files[file - 1U].name));
    }

    void aCardThatHidesWhichOneItIsIsRefused()
    {
        std::vector<CardMap> known{smallCardMap()};
        known.front().files[0].required = false;
        known.front().identity = {smallCardFile(1), smallCardFile(4)};
        known.front().files.push_back({.name = u"numéro"_s, .id = smallCardFile(4), .pointer = {}, .required = false});
        FileCard card(without(smallCard('A'), 1));
        QVERIFY(
            damageIn(documentOf(card, known)).endsWith(u" : la carte refuse tous les fichiers qui l’identifient"_s));
    }

    void aFileThatMayLackIsNotMissed()
    {
        std::vector<CardMap> known{smallCardMap()};
        const CardFile more{.name = u"photo"_s, .id = smallCardFile(3), .pointer = {}, .required = false};
        known.front().files.push_back(more);
        FileCard card(smallCard('A'));
        QVERIFY(documentOf(card, known) == Document(expectedDocument('A')));
    }

    void damagedDataAreAGap()
    {
        CardContent files = smallCard('A');
        files[smallCardFile(2)].chop(1);
        const Document document = documentOf(files);
        QVERIFY(!document);
        const auto* gap = std::get_if<CardGap>(&document.error());
        QVERIFY(gap != nullptr && gap->kind == CardGap::Kind::Damaged);
    }

    void whatIsMissingIsAGap()
    {
        CardContent files = smallCard('A');
        files[smallCardFile(2)] = tlv("65", tlv("80", "SPECIMEN"));
        const Document document = documentOf(files);
        QVERIFY(!document);
        const auto* gap = std::get_if<CardGap>(&document.error());
        QVERIFY(gap != nullptr && gap->kind == CardGap::Kind::Missing);
        QVERIFY(gap->missing.contains(u"amo/codeRegime"_s));
    }
};

QTEST_GUILESS_MAIN(TestCardReading)
#include "tst_cardreading.moc"
