#include "service/embedded/CardDocument.h"
#include "service/embedded/EmbeddedLibrary.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/embedded/FileCard.h"
#include "tests/service/embedded/SmallCard.h"

#include <QCoreApplication>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString feitian = u"Feitian SCR301"_s;
const QByteArray feitianInSystem = "Feitian SCR301 [CCID Interface] (123) 00 00";
const QByteArray otherInSystem = "Alcor AU9540 01 00";

/// What comes of an attempt to reach the card: the card, with what happens to it, or a fault.
using Attempt = std::expected<FileCard::Event, CardFault>;

const Attempt reached = FileCard::Event();

Attempt failsWith(CardFault fault)
{
    return std::unexpected(fault);
}

/// A card that is reached, and lost in the middle.
Attempt loses(CardFault fault, int number = 3)
{
    return FileCard::Event(
        [fault, number](FileCard&, int current) { return current == number ? std::optional(fault) : std::nullopt; });
}

/// What readers do, and what was asked of them.
struct Script
{
    std::expected<QList<QByteArray>, CardFault> names{QList<QByteArray>{otherInSystem, feitianInSystem}};
    QList<Attempt> attempts; // and faults that nobody expects afterwards
    QList<QByteArray> calls;
    std::function<void()> whileConnecting{};
    CardReaderState state = CardReaderState::Empty;
    const EmbeddedLibrary* library = nullptr; // for events that ask it
};

class ScriptedReaders final : public CardReaders
{
public:
    explicit ScriptedReaders(Script& script)
        : m_script(&script)
    {
    }

    std::expected<QList<QByteArray>, CardFault> names() override { return m_script->names; }

    std::expected<std::unique_ptr<CardTransport>, CardFault> connect(const QByteArray& reader) override
    {
        m_script->calls.append("connect " + reader);
        if (m_script->whileConnecting)
            m_script->whileConnecting();
        if (m_script->attempts.isEmpty())
            return std::unexpected(CardFault::Unexpected);
        const Attempt attempt = m_script->attempts.takeFirst();
        if (!attempt)
            return std::unexpected(attempt.error());
        return std::make_unique<FileCard>(smallCard('A'), *attempt);
    }

    void waitForCard(const QByteArray&, bool present, std::chrono::milliseconds longest) override
    {
        m_script->calls.append((present ? "wait for a card " : "wait for none ") +
                               QByteArray::number(qint64(longest.count())));
    }

    std::unique_ptr<ReaderWatch> watch(const ReaderReport& report) override
    {
        report(m_script->state);
        return nullptr;
    }

    void pause(std::chrono::milliseconds time) override
    {
        m_script->calls.append("pause " + QByteArray::number(qint64(time.count())));
    }

private:
    Script* m_script;
};

EmbeddedLibrary libraryOf(Script& script)
{
    return EmbeddedLibrary(std::make_unique<ScriptedReaders>(script), {smallCardMap()});
}

using Card = std::expected<QString, ReadResult>;

struct Read
{
    Card card;
    QList<QByteArray> calls;

    friend bool operator==(const Read&, const Read&) = default;
};

/// A read by a library whose reader is chosen.
Read readWith(const QList<Attempt>& attempts)
{
    Script script{.attempts = attempts, .calls = {}};
    EmbeddedLibrary library = libraryOf(script);
    if (!library.chooseReaders(feitian, feitian))
        return {};
    Card card = library.readCard();
    return {.card = std::move(card), .calls = script.calls};
}

const QByteArray connecting = "connect " + feitianInSystem;

Card wholeCard()
{
    return cardDocument(smallCardMap(), smallCard('A')).value();
}

} // namespace

class tst_EmbeddedLibrary : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void itIsTheEmbeddedLibraryUnlessTheSystemsIsWanted()
    {
        Script script;
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.initialise(LibraryMode::Automatic) == LibraryKind::Embedded);
        QVERIFY(library.initialise(LibraryMode::Embedded) == LibraryKind::Embedded);
        QVERIFY(!library.initialise(LibraryMode::System));
    }

    void theStateOfTheReadersIsReported()
    {
        Script script;
        script.state = CardReaderState::MuteCard;
        EmbeddedLibrary library = libraryOf(script);
        QList<CardReaderState> reports;
        QVERIFY(!library.watchReader([&reports](CardReaderState state) { reports.append(state); }));
        QCOMPARE(reports, QList{CardReaderState::MuteCard});
    }

    void readersAreNamedByTheirModels()
    {
        Script script;
        QCOMPARE(libraryOf(script).readers(), (QStringList{u"Alcor AU9540"_s, feitian}));
    }

    void withoutTheServiceThereAreNoReaders()
    {
        Script script;
        script.names = std::unexpected(CardFault::ServiceDown);
        EmbeddedLibrary library = libraryOf(script);
        QCOMPARE(library.readers(), QStringList());
        QVERIFY(!library.chooseReaders(feitian, feitian));
    }

    void onlyReadersThatAreThereAreChosen()
    {
        Script script;
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.chooseReaders(feitian, u"Alcor AU9540"_s));
        QVERIFY(!library.chooseReaders(feitian, u"Alcor"_s));
        QVERIFY(!library.chooseReaders(QString::fromUtf8(feitianInSystem), feitian));
    }

    void aRefusedChoiceLeavesTheEarlierOne()
    {
        Script script{.attempts = {reached}, .calls = {}};
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.chooseReaders(feitian, feitian));
        QVERIFY(!library.chooseReaders(u"Alcor AU9540"_s, u"?"_s));
        QVERIFY(library.readCard() == wholeCard());
        QCOMPARE(script.calls, QList<QByteArray>{connecting});
    }

    void aReadNeedsAChosenReader()
    {
        Script script{.attempts = {reached, reached}, .calls = {}};
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.readCard() == std::unexpected(ReadResult::ReaderFault));
        QVERIFY(library.chooseReaders(feitian, feitian));
        QVERIFY(library.initialise(LibraryMode::Embedded));
        QVERIFY(library.readCard() == std::unexpected(ReadResult::ReaderFault));
        QCOMPARE(script.calls, QList<QByteArray>());
    }

    void theCardInTheChosenReaderIsRead() { QVERIFY((readWith({reached}) == Read{wholeCard(), {connecting}})); }

    void aCardThatIsNotKnownYetIsWaitedForOnce()
    {
        const Attempt absent = failsWith(CardFault::CardAbsent);
        QVERIFY((readWith({absent, reached}) == Read{wholeCard(), {connecting, "wait for a card 500", connecting}}));
        QVERIFY((readWith({absent, absent, reached}) ==
                 Read{std::unexpected(ReadResult::CardAbsent), {connecting, "wait for a card 500", connecting}}));
    }

    void aCardThatHadLeftAlreadyIsAbsent()
    {
        const Attempt absent = failsWith(CardFault::CardAbsent);
        QVERIFY((readWith({loses(CardFault::CardGone, 1), absent, absent}) ==
                 Read{std::unexpected(ReadResult::CardAbsent),
                      {connecting, "wait for none 500", connecting, "wait for a card 500", connecting}}));
    }

    void aCardThatLeavesTwiceBeforeAnyAnswerHasChanged()
    {
        const Attempt leaves = loses(CardFault::CardGone, 1);
        QVERIFY((readWith({leaves, leaves, reached}) ==
                 Read{std::unexpected(ReadResult::CardChanged), {connecting, "wait for none 500", connecting}}));
    }

    void aBusyReaderIsWaitedForTwoSeconds()
    {
        const Attempt busy = failsWith(CardFault::ReaderBusy);
        QVERIFY((readWith({busy, busy, reached}) ==
                 Read{wholeCard(), {connecting, "pause 100", connecting, "pause 100", connecting}}));
        const Read read = readWith(QList<Attempt>(100, busy));
        QVERIFY(read.card == std::unexpected(ReadResult::ReaderFault));
        QCOMPARE(read.calls.count("pause 100"), 20);
    }

    void aCardThatWasResetIsReadOnceMore()
    {
        const Attempt reset = loses(CardFault::CardReset);
        QVERIFY((readWith({reset, reached}) == Read{wholeCard(), {connecting, connecting}}));
        QVERIFY((readWith({failsWith(CardFault::CardReset), reached}) == Read{wholeCard(), {connecting, connecting}}));
        QVERIFY((readWith({reset, reset, reached}) ==
                 Read{std::unexpected(ReadResult::CardChanged), {connecting, connecting}}));
    }

    void aServiceThatWasStartedAnewDuringAReadIsUsed()
    {
        const Attempt lost = loses(CardFault::ServiceLost);
        QVERIFY((readWith({lost, reached}) == Read{wholeCard(), {connecting, "pause 100", connecting}}));
    }

    void aServiceThatIsStartedAnewIsWaitedForTwoSeconds()
    {
        // It is lost, is away, and is back before it has found its readers.
        const Read read = readWith({failsWith(CardFault::ServiceLost), failsWith(CardFault::ServiceDown),
                                    failsWith(CardFault::ReaderUnknown), reached});
        QVERIFY(read.card == wholeCard());
        QCOMPARE(read.calls.count("pause 100"), 3);
        for (const CardFault fault : {CardFault::ServiceLost, CardFault::ServiceDown}) {
            const Read away = readWith(QList<Attempt>(100, failsWith(fault)));
            QVERIFY(away.card == std::unexpected(ReadResult::ReaderFault));
            QCOMPARE(away.calls.count("pause 100"), 20);
        }
    }

    void ofTwoAcceptedReadersTheOneWithACardIsRead()
    {
        const QByteArray second = "FEITIAN SCR301 02 00";
        Script script{.attempts = {failsWith(CardFault::CardAbsent), reached, reached}, .calls = {}};
        script.names = QList<QByteArray>{otherInSystem, feitianInSystem, second};
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.chooseReaders(feitian, u"Alcor AU9540"_s));
        QVERIFY(library.readCard() == wholeCard());
        // The chosen one comes first.
        QVERIFY(library.readCard() == wholeCard());
        QCOMPARE(script.calls, (QList<QByteArray>{connecting, "connect " + second, connecting}));
    }

    void whatIsInTheOtherReaderCountsOnlyIfItIsAHealthCard()
    {
        const QByteArray second = "Feitian SCR301 02 00";
        const Attempt professionalCard = FileCard::Event([](FileCard& card, int number) {
            if (number == 1)
                card.swapFor({{{QByteArray::fromHex("A000000000"), 1}, "x"}});
            return std::optional<CardFault>();
        });
        const Attempt absent = failsWith(CardFault::CardAbsent);
        for (const Attempt& other : {professionalCard, absent, failsWith(CardFault::ReaderBusy)}) {
            Script script{.attempts = {absent, other, absent, other}, .calls = {}};
            script.names = QList<QByteArray>{feitianInSystem, second};
            EmbeddedLibrary library = libraryOf(script);
            QVERIFY(library.chooseReaders(feitian, feitian));
            QVERIFY(library.readCard() == std::unexpected(ReadResult::CardAbsent));
        }
    }

    void aReaderOfTheModelIsFoundWhenTheChosenOneIsGone()
    {
        const QByteArray second = "Feitian Technologies SCR301 02 00";
        Script script{.attempts = {failsWith(CardFault::ReaderUnknown), reached}, .calls = {}};
        script.names = QList<QByteArray>{feitianInSystem, second};
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.chooseReaders(u"Feitian SCR301 (2)"_s, feitian));
        script.names = QList<QByteArray>{feitianInSystem};
        QVERIFY(library.readCard() == wholeCard());
        QCOMPARE(script.calls, (QList<QByteArray>{"connect " + second, connecting}));
    }

    void whatTheResultAloneWouldHideIsTold()
    {
        Script script{.attempts = QList<Attempt>(21, failsWith(CardFault::ReaderBusy)), .calls = {}};
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.chooseReaders(feitian, feitian));
        QCOMPARE(library.hint(), QString());
        QVERIFY(!library.readCard());
        QVERIFY(library.hint().startsWith(u"Un autre programme se sert de la carte"_s));
        script.attempts = {failsWith(CardFault::CardMute), reached};
        QVERIFY(!library.readCard());
        QCOMPARE(library.hint(), QString());
        script.names = std::unexpected(CardFault::ServiceDown);
        QCOMPARE(library.readers(), QStringList());
        QVERIFY(library.hint().startsWith(u"Le service des lecteurs de cartes (PC/SC) ne répond pas"_s));
        script.names = QList<QByteArray>();
        QCOMPARE(library.readers(), QStringList());
        QCOMPARE(library.hint(), QString());
    }

    void aReadThatWaitsForItsTurnSaysSo()
    {
        QString whileConnecting;
        QString whileReading;
        Script script{.attempts = {FileCard::Event([&whileReading, &script](FileCard&, int) {
                          whileReading = script.library->waitsFor();
                          return std::optional<CardFault>();
                      })},
                      .calls = {}};
        EmbeddedLibrary library = libraryOf(script);
        script.library = &library;
        script.whileConnecting = [&whileConnecting, &library] { whileConnecting = library.waitsFor(); };
        QVERIFY(library.chooseReaders(feitian, feitian));
        QVERIFY(library.readCard() == wholeCard());
        QCOMPARE(whileConnecting, hint(CardFault::ReaderBusy));
        QCOMPARE(whileReading, QString());
    }

    void aReaderThatIsBackUnderAnotherNumberIsFound()
    {
        const QByteArray back = "Feitian SCR301 [CCID Interface] (123) 02 00";
        Script script{.attempts = {failsWith(CardFault::ReaderUnknown), reached, reached}, .calls = {}};
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.chooseReaders(feitian, feitian));
        script.names = QList<QByteArray>{back};
        QVERIFY(library.readCard() == wholeCard());
        QVERIFY(library.readCard() == wholeCard());
        QCOMPARE(script.calls, (QList<QByteArray>{connecting, "connect " + back, "connect " + back}));
    }

    void aReaderThatStaysAwayIsAFault()
    {
        Script script{.attempts = QList<Attempt>(10, failsWith(CardFault::ReaderUnknown)), .calls = {}};
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.chooseReaders(feitian, feitian));
        script.names = QList<QByteArray>{otherInSystem};
        QVERIFY(library.readCard() == std::unexpected(ReadResult::ReaderFault));
        QCOMPARE(script.calls, (QList<QByteArray>{connecting, connecting}));
    }

    void otherFaultsEndTheReadAtOnce_data()
    {
        QTest::addColumn<CardFault>("fault");
        for (const CardFault fault :
             {CardFault::ServiceForbidden, CardFault::ReaderLost, CardFault::CardSilent, CardFault::CardMute,
              CardFault::CardGone, CardFault::CardNonsense, CardFault::Unexpected})
            QTest::addRow("%d", static_cast<int>(fault)) << fault;
    }

    void otherFaultsEndTheReadAtOnce()
    {
        QFETCH(CardFault, fault);
        QVERIFY((readWith({failsWith(fault), reached}) == Read{std::unexpected(readResult(fault)), {connecting}}));
        if (fault != CardFault::CardNonsense)
            QVERIFY((readWith({loses(fault), reached}) == Read{std::unexpected(readResult(fault)), {connecting}}));
    }

    void aCardWithoutWhatIsNeededIsOfNoUse()
    {
        // A person of whom nothing is known is left when the others are taken away.
        const Attempt emptied = FileCard::Event([](FileCard& card, int number) {
            if (number == 1)
                card.swapFor({{smallCardFile(1), tlv("5A", "AAA")}, {smallCardFile(2), tlv("65", tlv("80", "A"))}});
            return std::optional<CardFault>();
        });
        QVERIFY((readWith({emptied}) == Read{std::unexpected(ReadResult::Unusable), {connecting}}));
    }

    void damagedDataAreAReadError()
    {
        const Attempt damaged = FileCard::Event([](FileCard& card, int number) {
            if (number == 1)
                card.swapFor({{smallCardFile(1), tlv("5A", "AAA")}, {smallCardFile(2), QByteArray::fromHex("6505")}});
            return std::optional<CardFault>();
        });
        QVERIFY((readWith({damaged}) == Read{std::unexpected(ReadResult::ReadError), {connecting}}));
    }

    void itNamesItselfAndItsMaps()
    {
        Script script;
        const QString document = libraryOf(script).informations();
        QVERIFY(document.contains(u"<version>" PELMORA_VERSION " (PC/SC)</version>"_s));
        QVERIFY(document.contains(u"<tableLibVitale>Carte d’essai 7</tableLibVitale>"_s));
    }
};

template class RunnableTests<tst_EmbeddedLibrary, QCoreApplication>;
#include "tst_embeddedlibrary.moc"
