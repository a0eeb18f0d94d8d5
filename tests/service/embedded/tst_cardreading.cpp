#include "service/embedded/CardDocument.h"
#include "service/embedded/CardReading.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/FileCard.h"
#include "tests/service/embedded/SmallCard.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Document = std::expected<QString, CardFailure>;

// A file takes three commands: select, read, and read the end. A read has the application and both files, then the
// application and the second file again, and last the application and the file that identifies the card.
constexpr int commandsOfAFile = 3;
constexpr int commandsOfARead = (1 + 2 * commandsOfAFile) + (1 + commandsOfAFile) + (1 + commandsOfAFile);
// From this command on the card is identified.
constexpr int firstAfterIdentity = 1 + commandsOfAFile + 1;

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

/// The log's text about damaged content; empty when there is none.
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

/// A card with one answer, counted from 1, that is changed on its way.
class FalsifiedCard final : public CardTransport
{
public:
    using Change = std::function<QByteArray(const QByteArray& answer)>;

    FalsifiedCard(CardContent files, int number, Change change)
        : m_card(std::move(files))
        , m_number(number)
        , m_change(std::move(change))
    {
    }

    std::expected<QByteArray, CardFault> transmit(QByteArrayView command) override
    {
        std::expected<QByteArray, CardFault> answer = m_card.transmit(command);
        return answer && m_card.commands() == m_number ? m_change(*answer) : answer;
    }

private:
    FileCard m_card;
    int m_number;
    Change m_change;
};

/// The result of a read with one changed answer: "true" for the complete record, "refused" for a failure, else the
/// document.
QString outcomeOf(int number, const FalsifiedCard::Change& change)
{
    FalsifiedCard card(smallCard('A'), number, change);
    const Document document = documentOf(card);
    if (!document)
        return u"refused"_s;
    return *document == expectedDocument('A') ? u"true"_s : *document;
}

/// The outcomes of a read with that change to each command's answer, without repetitions.
QStringList outcomesOf(const FalsifiedCard::Change& change)
{
    QStringList outcomes;
    for (int number = 1; number <= commandsOfARead; ++number)
        outcomes.append(outcomeOf(number, change));
    outcomes.removeDuplicates();
    outcomes.sort();
    return outcomes;
}

bool onlyTrueOrRefused(const QStringList& outcomes)
{
    return std::ranges::all_of(outcomes,
                               [](const QString& outcome) { return outcome == u"true" || outcome == u"refused"; });
}

/// An event before one of the commands.
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

class tst_CardReading : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theDocumentIsThatOfTheCardsFiles()
    {
        FileCard card(smallCard('A'));
        QVERIFY(documentOf(card) == Document(expectedDocument('A')));
        QCOMPARE(card.commands(), commandsOfARead);
    }

    void theFirstMatchingMapIsUsed()
    {
        CardMap other = smallCardMap();
        other.application = QByteArray::fromHex("F0FF");
        FileCard card(smallCard('A'));
        QVERIFY(documentOf(card, {other, smallCardMap()}) == Document(expectedDocument('A')));
        QCOMPARE(card.commands(), commandsOfARead + 1);
    }

    void aCardWithoutAMapIsOfAnUnknownKind()
    {
        QCOMPARE(faultIn(documentOf(bankCard())), CardFault::CardOfOtherKind);
        FileCard card(smallCard('A'));
        QCOMPARE(faultIn(documentOf(card, {})), CardFault::CardOfOtherKind);
    }

    void aCardRemovedBeforeItsFirstAnswerGivesGoneUnheard()
    {
        QCOMPARE(faultIn(documentOf(smallCard('A'), leavesAt(1))), CardFault::CardGoneUnheard);
    }

    void aCardRemovedLaterGivesGone()
    {
        for (int number = 2; number <= commandsOfARead; ++number)
            QCOMPARE(faultIn(documentOf(smallCard('A'), leavesAt(number))), CardFault::CardGone);
    }

    void anyFaultOfTheTransportEndsTheRead()
    {
        for (const CardFault fault : {CardFault::CardReset, CardFault::ReaderLost, CardFault::ServiceLost}) {
            const FileCard::Event event = at(4, [fault](FileCard&, int) { return std::optional(fault); });
            QCOMPARE(faultIn(documentOf(smallCard('A'), event)), fault);
        }
    }

    void anUnreportedReplacementByAnotherCardIsNoticed()
    {
        QVERIFY(documentOf(smallCard('A'), swappedAt(1, smallCard('B'))) == Document(expectedDocument('B')));
        for (int number = 2; number < firstAfterIdentity; ++number)
            QVERIFY(!damageIn(documentOf(smallCard('A'), swappedAt(number, smallCard('B')))).isEmpty());
        for (int number = firstAfterIdentity; number <= commandsOfARead; ++number)
            QCOMPARE(faultIn(documentOf(smallCard('A'), swappedAt(number, smallCard('B')))), CardFault::CardSwapped);
    }

    void aReplacementByACardOfAnotherKindIsNoticed()
    {
        QCOMPARE(faultIn(documentOf(smallCard('A'), swappedAt(1, bankCard()))), CardFault::CardOfOtherKind);
        for (int number = 2; number <= commandsOfARead; ++number)
            QCOMPARE(faultIn(documentOf(smallCard('A'), swappedAt(number, bankCard()))), CardFault::CardSwapped);
    }

    void aRefusedFileIsReportedByName()
    {
        for (const quint16 file : {quint16{1}, quint16{2}})
            QCOMPARE(damageIn(documentOf(without(smallCard('A'), file))),
                     u"plan « %1 » : la carte refuse le fichier « %2 »"_s.arg(maps().front().name,
                                                                              maps().front().files[file - 1U].name));
    }

    void aRefusedCommandIsNotReportedAsAnotherCard()
    {
        for (int number = 2; number <= commandsOfARead; ++number) {
            const auto refuse = [](const QByteArray&) { return QByteArray::fromHex("6982"); };
            FalsifiedCard card(smallCard('A'), number, refuse);
            const Document document = documentOf(card);
            QVERIFY(!document);
            QVERIFY2(!damageIn(document).isEmpty(), qPrintable(QString::number(number)));
        }
    }

    void aFaultOfOneAnswerChangesNothingOrIsRefused()
    {
        qsizetype longest = 2;
        for (const auto& [id, content] : smallCard('A'))
            longest = std::max(longest, content.size() + 2);
        for (qsizetype place = 0; place < longest; ++place) {
            for (const char bits : {'\x01', '\xFF'}) {
                const QStringList outcomes = outcomesOf([place, bits](QByteArray answer) {
                    if (place < answer.size())
                        answer[place] = static_cast<char>(answer[place] ^ bits);
                    return answer;
                });
                // At each place, at least one answer is refused after this change.
                QVERIFY(outcomes.contains(u"refused"_s));
                QVERIFY2(onlyTrueOrRefused(outcomes), qPrintable(outcomes.join(u'\n')));
            }
        }
    }

    void anAnswerThatIsCutShortChangesNothingOrIsRefused()
    {
        for (qsizetype size = 0; size < 100; ++size) {
            const auto shorter = [size](const QByteArray& answer) {
                return answer.first(std::min(size, answer.size() - 2)) + answer.last(2);
            };
            // The rest is read with the next command.
            QCOMPARE(outcomesOf(shorter), size == 0 ? QStringList({u"refused"_s, u"true"_s}) : QStringList(u"true"_s));
            const auto cut = [size](const QByteArray& answer) { return answer.first(std::min(size, answer.size())); };
            const QStringList outcomes = outcomesOf(cut);
            QVERIFY2(onlyTrueOrRefused(outcomes), qPrintable(outcomes.join(u'\n')));
        }
    }

    void anotherAnswerInItsPlaceChangesNothingOrIsRefused()
    {
        const QByteArray persons = smallCard('B')[smallCardFile(2)];
        for (const QByteArray& answer : {persons + QByteArray::fromHex("9000"), QByteArray::fromHex("9000"),
                                         QByteArray::fromHex("6282"), QByteArray::fromHex("6B00")}) {
            const QStringList outcomes = outcomesOf([answer](const QByteArray&) { return answer; });
            QVERIFY(outcomes.contains(u"refused"_s));
            QVERIFY2(onlyTrueOrRefused(outcomes), qPrintable(outcomes.join(u'\n')));
        }
    }

    void aReadEndsAfterTheMaximumOfCommands()
    {
        CardContent files = smallCard('A');
        std::vector<CardMap> known{smallCardMap()};
        for (quint16 number = 3; number < 1000; ++number) {
            known.front().files.push_back({.name = QString::number(number),
                                           .id = smallCardFile(number),
                                           .pointer = {},
                                           .required = false,
                                           .ignored = {}});
            files[smallCardFile(number)] = tlv("04", "x");
        }
        FileCard card(files);
        QCOMPARE(faultIn(documentOf(card, known)), CardFault::CardEndless);
        QCOMPARE(card.commands(), CardChannel::mostCommands);
    }

    void aCardThatRefusesItsIdentityIsRefused()
    {
        std::vector<CardMap> known{smallCardMap()};
        known.front().files[0].required = false;
        known.front().identity = {smallCardFile(1), smallCardFile(4)};
        known.front().files.push_back(
            {.name = u"numéro"_s, .id = smallCardFile(4), .pointer = {}, .required = false, .ignored = {}});
        FileCard card(without(smallCard('A'), 1));
        QVERIFY(
            damageIn(documentOf(card, known)).endsWith(u" : la carte refuse tous les fichiers qui l’identifient"_s));
    }

    void aMissingOptionalFileIsAccepted()
    {
        std::vector<CardMap> known{smallCardMap()};
        const CardFile more{
            .name = u"photo"_s, .id = smallCardFile(3), .pointer = {}, .required = false, .ignored = {}};
        known.front().files.push_back(more);
        FileCard card(smallCard('A'));
        QVERIFY(documentOf(card, known) == Document(expectedDocument('A')));
    }

    void damagedDataGiveAGap()
    {
        CardContent files = smallCard('A');
        files[smallCardFile(2)].chop(1);
        const Document document = documentOf(files);
        QVERIFY(!document);
        const auto* gap = std::get_if<CardGap>(&document.error());
        QVERIFY(gap != nullptr && gap->kind == CardGap::Kind::Damaged);
    }

    void missingFieldsGiveAGap()
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

template class RunnableTests<tst_CardReading, QCoreApplication>;
#include "tst_cardreading.moc"
