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

/// The result of an attempt to connect: a card, with the events during its reading, or a fault.
using Attempt = std::expected<FileCard::Event, CardFault>;

const Attempt reached = FileCard::Event();

Attempt failsWith(CardFault fault)
{
    return std::unexpected(fault);
}

/// A card that gives a fault at one of its commands.
Attempt loses(CardFault fault, int number = 3)
{
    return FileCard::Event(
        [fault, number](FileCard&, int current) { return current == number ? std::optional(fault) : std::nullopt; });
}

/// A card with other content than the small card.
Attempt reachedWith(const CardContent& content)
{
    return FileCard::Event([content](FileCard& card, int number) {
        if (number == 1)
            card.swapFor(content);
        return std::optional<CardFault>();
    });
}

/// The results of the readers' calls, and the calls that were made.
struct Script
{
    std::expected<QList<QByteArray>, CardFault> names{QList<QByteArray>{otherInSystem, feitianInSystem}};
    QList<Attempt> attempts{}; // after the last one, unexpected faults
    QList<QByteArray> calls{};
    std::function<void()> whileConnecting{};
    CardReaderState state = CardReaderState::Empty;
    const EmbeddedLibrary* library = nullptr; // for events that use it
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

struct ReadOutcome
{
    Card card;
    QList<QByteArray> calls;

    friend bool operator==(const ReadOutcome&, const ReadOutcome&) = default;
};

/// The attempts of a read, as a column of a test's data.
struct Attempts
{
    QList<Attempt> list;
};

/// A read by a library whose reader is chosen.
ReadOutcome readWith(const QList<Attempt>& attempts)
{
    Script script{.attempts = attempts};
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
    void theLibraryRefusesOnlyTheModeSystem()
    {
        Script script;
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.initialise(LibraryMode::Automatic) == LibraryKind::Embedded);
        QVERIFY(library.initialise(LibraryMode::Embedded) == LibraryKind::Embedded);
        QVERIFY(!library.initialise(LibraryMode::System));
    }

    void theStateOfTheReadersIsReported()
    {
        Script script{.state = CardReaderState::MuteCard};
        EmbeddedLibrary library = libraryOf(script);
        QList<CardReaderState> reports;
        QVERIFY(!library.watchReader([&reports](CardReaderState state) { reports.append(state); }));
        QCOMPARE(reports, QList{CardReaderState::MuteCard});
    }

    void readersAreListedByTheirModels()
    {
        Script script;
        QCOMPARE(libraryOf(script).readers(), (QStringList{u"Alcor AU9540"_s, feitian}));
    }

    void withoutTheServiceThereAreNoReaders()
    {
        Script script{.names = std::unexpected(CardFault::ServiceDown)};
        EmbeddedLibrary library = libraryOf(script);
        QCOMPARE(library.readers(), QStringList());
        QVERIFY(!library.chooseReaders(feitian, feitian));
    }

    void onlyConnectedReadersCanBeChosen()
    {
        Script script;
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.chooseReaders(feitian, u"Alcor AU9540"_s));
        QVERIFY(!library.chooseReaders(feitian, u"Alcor"_s));
        QVERIFY(!library.chooseReaders(QString::fromUtf8(feitianInSystem), feitian));
    }

    void aRefusedChoiceLeavesTheEarlierOne()
    {
        Script script{.attempts = {reached}};
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.chooseReaders(feitian, feitian));
        QVERIFY(!library.chooseReaders(u"Alcor AU9540"_s, u"?"_s));
        QVERIFY(library.readCard() == wholeCard());
        QCOMPARE(script.calls, QList<QByteArray>{connecting});
    }

    void aReadNeedsAChosenReader()
    {
        Script script{.attempts = {reached, reached}};
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.readCard() == std::unexpected(ReadResult::ReaderFault));
        QVERIFY(library.chooseReaders(feitian, feitian));
        QVERIFY(library.initialise(LibraryMode::Embedded));
        QVERIFY(library.readCard() == std::unexpected(ReadResult::ReaderFault));
        QCOMPARE(script.calls, QList<QByteArray>());
    }

    void aReadRetriesAfterSomeFaultsAndEndsAfterOthers_data()
    {
        QTest::addColumn<Attempts>("attempts");
        QTest::addColumn<ReadOutcome>("expected");
        const auto row = [](const char* name, const QList<Attempt>& attempts, const ReadOutcome& expected) {
            QTest::newRow(name) << Attempts{attempts} << expected;
        };
        const Card found = wholeCard();
        const Card changed = std::unexpected(ReadResult::CardChanged);
        const QByteArray pause = "pause 100";
        row("card in the chosen reader", {reached}, {found, {connecting}});
        const Attempt absent = failsWith(CardFault::CardAbsent);
        const Card noCard = std::unexpected(ReadResult::CardAbsent);
        row("card recognised late", {absent, reached}, {found, {connecting, "wait for a card 500", connecting}});
        row("no card", {absent, absent, reached}, {noCard, {connecting, "wait for a card 500", connecting}});
        const Attempt removed = loses(CardFault::CardGone, 1);
        row("card removed before the read", {removed, absent, absent},
            {noCard, {connecting, "wait for none 500", connecting, "wait for a card 500", connecting}});
        row("card removed twice before any answer", {removed, removed, reached},
            {changed, {connecting, "wait for none 500", connecting}});
        const Attempt busy = failsWith(CardFault::ReaderBusy);
        row("busy reader", {busy, busy, reached}, {found, {connecting, pause, connecting, pause, connecting}});
        const Attempt reset = loses(CardFault::CardReset);
        row("card reset during the read", {reset, reached}, {found, {connecting, connecting}});
        row("card reset before the read", {failsWith(CardFault::CardReset), reached},
            {found, {connecting, connecting}});
        row("card reset twice", {reset, reset, reached}, {changed, {connecting, connecting}});
        row("service restarted during the read", {loses(CardFault::ServiceLost), reached},
            {found, {connecting, pause, connecting}});
        const Attempt lost = failsWith(CardFault::ServiceLost);
        row("service not ready yet",
            {lost, failsWith(CardFault::ServiceDown), failsWith(CardFault::ReaderUnknown), reached},
            {found, {connecting, pause, connecting, pause, connecting, pause, connecting}});
        // The person has only a name.
        row("fields missing",
            {reachedWith({{smallCardFile(1), tlv("5A", "AAA")}, {smallCardFile(2), tlv("65", tlv("80", "A"))}})},
            {std::unexpected(ReadResult::Unusable), {connecting}});
        row("damaged data",
            {reachedWith({{smallCardFile(1), tlv("5A", "AAA")}, {smallCardFile(2), QByteArray::fromHex("6505")}})},
            {std::unexpected(ReadResult::ReadError), {connecting}});
    }

    void aReadRetriesAfterSomeFaultsAndEndsAfterOthers()
    {
        QFETCH(const Attempts, attempts);
        QFETCH(const ReadOutcome, expected);
        const ReadOutcome read = readWith(attempts.list);
        QCOMPARE(read.calls, expected.calls);
        QVERIFY(read.card == expected.card);
    }

    void aBusyReaderOrAnAbsentServiceIsRetriedForTwoSeconds()
    {
        for (const CardFault fault : {CardFault::ReaderBusy, CardFault::ServiceLost, CardFault::ServiceDown}) {
            const ReadOutcome read = readWith(QList<Attempt>(100, failsWith(fault)));
            QVERIFY(read.card == std::unexpected(ReadResult::ReaderFault));
            QCOMPARE(read.calls.count("pause 100"), 20);
        }
    }

    void ofTwoAcceptedReadersTheOneWithACardIsUsed()
    {
        const QByteArray second = "FEITIAN SCR301 02 00";
        Script script{.names = QList<QByteArray>{otherInSystem, feitianInSystem, second},
                      .attempts = {failsWith(CardFault::CardAbsent), reached, reached}};
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.chooseReaders(feitian, u"Alcor AU9540"_s));
        QVERIFY(library.readCard() == wholeCard());
        // The chosen reader is tried first.
        QVERIFY(library.readCard() == wholeCard());
        QCOMPARE(script.calls, (QList<QByteArray>{connecting, "connect " + second, connecting}));
    }

    void aCardInTheOtherReaderIsUsedOnlyIfItIsAHealthCard()
    {
        const QByteArray second = "Feitian SCR301 02 00";
        const Attempt professionalCard = reachedWith({{{QByteArray::fromHex("A000000000"), 1}, "x"}});
        const Attempt absent = failsWith(CardFault::CardAbsent);
        for (const Attempt& other : {professionalCard, absent, failsWith(CardFault::ReaderBusy)}) {
            Script script{.names = QList<QByteArray>{feitianInSystem, second},
                          .attempts = {absent, other, absent, other}};
            EmbeddedLibrary library = libraryOf(script);
            QVERIFY(library.chooseReaders(feitian, feitian));
            QVERIFY(library.readCard() == std::unexpected(ReadResult::CardAbsent));
        }
    }

    void theHintExplainsTheLastFailure()
    {
        Script script{.attempts = QList<Attempt>(21, failsWith(CardFault::ReaderBusy))};
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

    void aReadThatWaitsForAnotherProgramHasAHint()
    {
        QString whileConnecting;
        QString whileReading;
        Script script;
        script.attempts = {FileCard::Event([&whileReading, &script](FileCard&, int) {
            whileReading = script.library->waitsFor();
            return std::optional<CardFault>();
        })};
        EmbeddedLibrary library = libraryOf(script);
        script.library = &library;
        script.whileConnecting = [&whileConnecting, &library] { whileConnecting = library.waitsFor(); };
        QVERIFY(library.chooseReaders(feitian, feitian));
        QVERIFY(library.readCard() == wholeCard());
        QCOMPARE(whileConnecting, hint(CardFault::ReaderBusy));
        QCOMPARE(whileReading, QString());
    }

    void aReaderOfTheModelIsUsedWhenTheChosenOneIsDisconnected()
    {
        const QByteArray second = "Feitian Technologies SCR301 02 00";
        Script script{.names = QList<QByteArray>{feitianInSystem, second},
                      .attempts = {failsWith(CardFault::ReaderUnknown), reached}};
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.chooseReaders(u"Feitian SCR301 (2)"_s, feitian));
        script.names = QList<QByteArray>{feitianInSystem};
        QVERIFY(library.readCard() == wholeCard());
        QCOMPARE(script.calls, (QList<QByteArray>{"connect " + second, connecting}));
    }

    void aReaderReconnectedUnderAnotherNumberIsFound()
    {
        const QByteArray back = "Feitian SCR301 [CCID Interface] (123) 02 00";
        Script script{.attempts = {failsWith(CardFault::ReaderUnknown), reached, reached}};
        EmbeddedLibrary library = libraryOf(script);
        QVERIFY(library.chooseReaders(feitian, feitian));
        script.names = QList<QByteArray>{back};
        QVERIFY(library.readCard() == wholeCard());
        QVERIFY(library.readCard() == wholeCard());
        QCOMPARE(script.calls, (QList<QByteArray>{connecting, "connect " + back, "connect " + back}));
    }

    void aReaderThatStaysDisconnectedIsAFault()
    {
        Script script{.attempts = QList<Attempt>(10, failsWith(CardFault::ReaderUnknown))};
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
        QVERIFY(
            (readWith({failsWith(fault), reached}) == ReadOutcome{std::unexpected(readResult(fault)), {connecting}}));
        if (fault != CardFault::CardNonsense)
            QVERIFY(
                (readWith({loses(fault), reached}) == ReadOutcome{std::unexpected(readResult(fault)), {connecting}}));
    }

    void theVersionsNameTheLibraryAndItsMaps()
    {
        Script script;
        const QString document = libraryOf(script).informations();
        QVERIFY(document.contains(u"<version>" PELMORA_VERSION " (PC/SC)</version>"_s));
        QVERIFY(document.contains(u"<tableLibVitale>Carte d’essai 7</tableLibVitale>"_s));
    }
};

template class RunnableTests<tst_EmbeddedLibrary, QCoreApplication>;
#include "tst_embeddedlibrary.moc"
