#include "service/DeadlineLibrary.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <atomic>
#include <semaphore>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString card = u"<T_AsnDonneesVitale/>"_s;

/// The calls of a library.
enum class Call
{
    None,
    Initialise,
    Readers,
    ChooseReaders,
    Informations,
    ReadCard
};

/// Shared by the test and its library, which the library under test owns.
struct Stage
{
    std::counting_semaphore<> release{0}; // lets the hanging call continue
    std::counting_semaphore<> closed{0};  // the library was destroyed
    std::atomic<std::thread::id> closedOn;
    std::atomic<std::thread::id> calledOn;
    std::atomic<int> calls = 0;
    QString waitsFor; // set before the call that hangs
};

/// A library with one call that hangs until the test releases it.
class StuckLibrary final : public ReadingLibrary
{
public:
    StuckLibrary(std::shared_ptr<Stage> stage, Call stuckCall)
        : m_stage(std::move(stage))
        , m_stuckCall(stuckCall)
    {
    }
    Q_DISABLE_COPY_MOVE(StuckLibrary)
    ~StuckLibrary() override
    {
        m_stage->closedOn = std::this_thread::get_id();
        m_stage->closed.release();
    }

    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode mode) override
    {
        work(Call::Initialise);
        return mode == LibraryMode::System ? LibraryKind::System : LibraryKind::Embedded;
    }
    [[nodiscard]] QStringList readers() override
    {
        work(Call::Readers);
        return {u"A"_s, u"B"_s};
    }
    [[nodiscard]] bool chooseReaders(const QString& vitaleReader, const QString& professionalReader) override
    {
        work(Call::ChooseReaders);
        return vitaleReader == u"A"_s && professionalReader == u"B"_s;
    }
    [[nodiscard]] QString informations() override
    {
        work(Call::Informations);
        return u"<informations/>"_s;
    }
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override
    {
        work(Call::ReadCard);
        return card;
    }
    [[nodiscard]] std::unique_ptr<ReaderWatch> watchReader(const ReaderReport& report) override
    {
        m_stage->calledOn = std::this_thread::get_id();
        report(CardReaderState::Card);
        return std::make_unique<ReaderWatch>();
    }
    [[nodiscard]] QString hint() const override { return u"after %1 calls"_s.arg(m_stage->calls); }
    [[nodiscard]] QString waitsFor() const override { return m_stage->waitsFor; }

private:
    void work(Call call)
    {
        m_stage->calledOn = std::this_thread::get_id();
        ++m_stage->calls;
        if (call == m_stuckCall)
            m_stage->release.acquire();
    }

    std::shared_ptr<Stage> m_stage;
    Call m_stuckCall;
};

/// The library under test. Its destructor releases a hanging call and waits for the end of its thread.
struct Subject
{
    explicit Subject(Call stuckCall, DeadlineLimits limits = {})
        : library(std::make_unique<DeadlineLibrary>(std::make_unique<StuckLibrary>(stage, stuckCall), limits))
    {
    }
    Q_DISABLE_COPY_MOVE(Subject)
    ~Subject()
    {
        library.reset();
        stage->release.release();
        stage->closed.acquire();
    }

    std::shared_ptr<Stage> stage = std::make_shared<Stage>();
    std::unique_ptr<DeadlineLibrary> library;
};

/// All answers of a library, as one text.
QString answersOf(ReadingLibrary& library, Call only = Call::None)
{
    QStringList answers;
    const auto wants = [only](Call call) { return only == Call::None || only == call; };
    if (wants(Call::Initialise)) {
        const std::optional<LibraryKind> kind = library.initialise(LibraryMode::System);
        answers << (kind ? QString::number(static_cast<int>(*kind)) : u"none"_s);
    }
    if (wants(Call::Readers))
        answers << library.readers().join(u'+');
    if (wants(Call::ChooseReaders))
        answers << (library.chooseReaders(u"A"_s, u"B"_s) ? u"chosen"_s : u"not chosen"_s);
    if (wants(Call::Informations))
        answers << library.informations();
    if (wants(Call::ReadCard)) {
        const std::expected<QString, ReadResult> read = library.readCard();
        answers << (read ? *read : QString::number(static_cast<int>(read.error())));
    }
    return answers.join(u' ');
}

} // namespace

class tst_DeadlineLibrary : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void answersAreThoseOfTheLibrary()
    {
        const Subject subject(Call::None);
        QCOMPARE(answersOf(*subject.library), u"1 A+B chosen <informations/> <T_AsnDonneesVitale/>"_s);
        QVERIFY(!subject.library->isBeyondUse());
    }

    void everyCallAndTheEndAreOnOneThreadThatIsNotTheCallers()
    {
        const std::shared_ptr<Stage> stage = std::make_shared<Stage>();
        {
            DeadlineLibrary library(std::make_unique<StuckLibrary>(stage, Call::None));
            QCOMPARE(library.readers().size(), 2);
            const std::thread::id worker = stage->calledOn;
            QVERIFY(worker != std::this_thread::get_id());
            QVERIFY(library.readCard().has_value());
            QVERIFY(stage->calledOn.load() == worker);
        }
        // The destructor has waited for the library's end.
        QVERIFY(stage->closed.try_acquire());
        QVERIFY(stage->closedOn.load() == stage->calledOn.load());
    }

    void aCallThatNeverReturnsIsAnsweredAtItsLimit_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QString>("answer");
        QTest::newRow("initialise") << Call::Initialise << u"none"_s;
        QTest::newRow("readers") << Call::Readers << QString();
        QTest::newRow("chooseReaders") << Call::ChooseReaders << u"not chosen"_s;
        QTest::newRow("informations") << Call::Informations << QString();
        QTest::newRow("readCard") << Call::ReadCard << u"25"_s;
    }

    void aCallThatNeverReturnsIsAnsweredAtItsLimit()
    {
        QFETCH(Call, call);
        QFETCH(QString, answer);
        const Subject subject(call, {.read = 20ms, .other = 20ms});
        QCOMPARE(answersOf(*subject.library, call), answer);
        QVERIFY(subject.library->isBeyondUse());
    }

    void afterALateCallEveryCallFailsAtOnceWithoutTheLibrary()
    {
        const Subject subject(Call::ReadCard, {.read = 20ms, .other = 1h});
        QCOMPARE(subject.library->readers().size(), 2);
        QVERIFY(!subject.library->readCard().has_value());
        QCOMPARE(answersOf(*subject.library), u"none  not chosen  25"_s);
        QCOMPARE(subject.stage->calls.load(), 2);
    }

    void aReadHasItsOwnLimit()
    {
        const Subject subject(Call::ReadCard, {.read = 100ms, .other = 1h});
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!subject.library->readCard().has_value());
        QVERIFY(timer.elapsed() >= 100);
    }

    void aLateReadThatWaitsForAnotherProgramIsAReaderFaultWithItsHint()
    {
        const Subject subject(Call::ReadCard, {.read = 20ms, .other = 1h});
        subject.stage->waitsFor = u"un autre programme"_s;
        QVERIFY(subject.library->readCard() == std::unexpected(ReadResult::ReaderFault));
        QCOMPARE(subject.library->hint(), u"un autre programme"_s);
        QVERIFY(subject.library->isBeyondUse());
        // The next read fails at once.
        QVERIFY(subject.library->readCard() == std::unexpected(ReadResult::CardMute));
    }

    void theHintOfTheLibraryIsReturned()
    {
        const Subject subject(Call::None);
        QCOMPARE(subject.library->hint(), QString());
        QCOMPARE(subject.library->readers().size(), 2);
        QCOMPARE(subject.library->hint(), u"after 1 calls"_s);
        QVERIFY(subject.library->readCard().has_value());
        QCOMPARE(subject.library->hint(), u"after 2 calls"_s);
    }

    void aCallThatReturnsAfterItsLimitClosesTheLibrary()
    {
        const std::shared_ptr<Stage> stage = std::make_shared<Stage>();
        {
            DeadlineLibrary library(std::make_unique<StuckLibrary>(stage, Call::ReadCard), {.read = 20ms});
            QVERIFY(!library.readCard().has_value());
        }
        QVERIFY(!stage->closed.try_acquire());
        stage->release.release();
        stage->closed.acquire();
        QVERIFY(stage->closedOn.load() == stage->calledOn.load());
    }

    void theDefaultLimitsAreTwentySecondsForAReadAndTenForOtherCalls()
    {
        constexpr DeadlineLimits limits;
        QCOMPARE(limits.read, 20s);
        QCOMPARE(limits.other, 10s);
    }

    void theReaderIsWatchedByTheLibraryOnItsThread()
    {
        const Subject subject(Call::None);
        std::atomic<int> reports = 0;
        QVERIFY(subject.library->watchReader([&reports](CardReaderState) { ++reports; }) != nullptr);
        QCOMPARE(reports, 1);
        QVERIFY(subject.stage->calledOn != std::this_thread::get_id());
    }
};

template class RunnableTests<tst_DeadlineLibrary, QCoreApplication>;
#include "tst_deadlinelibrary.moc"
