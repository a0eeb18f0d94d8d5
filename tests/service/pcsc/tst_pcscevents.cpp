#include "service/pcsc/PcscEvents.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/pcsc/FakePcsc.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <future>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray reader = "Feitian SCR301 00 00";
constexpr unsigned long oneMovement = 1UL << 16U;

using Answer = std::optional<ReaderEvents::Readers>;

/// A service with its socket's folder, and the events under test.
struct Subject
{
    [[nodiscard]] QString folder() const { return root.filePath(u"pcscd"_s); }
    [[nodiscard]] QString socket() const { return folder() + u"/pcscd.comm"_s; }

    /// The next answer, on another thread, as it may wait.
    std::future<Answer> next()
    {
        return std::async(std::launch::async, [this] { return events.next(); });
    }
    /// The answer; absent when none comes within some seconds.
    Answer answerOf(std::future<Answer> future)
    {
        if (future.wait_for(10s) != std::future_status::ready)
            events.cancel();
        return future.get();
    }

    QTemporaryDir root;
    FakePcsc service;
    PcscEvents events{QFile::encodeName(socket())};
};

Answer answerWith(const QList<WatchedReader>& readers)
{
    return ReaderEvents::Readers(readers);
}

Answer answerWith(CardFault fault)
{
    return ReaderEvents::Readers(std::unexpected(fault));
}

} // namespace

class tst_PcscEvents : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstAnswerComesAtOnce_data()
    {
        QTest::addColumn<unsigned long>("state");
        QTest::addColumn<WatchedReader>("watched");
        QTest::newRow("empty") << (FakePcsc::empty | oneMovement) << WatchedReader{.name = reader, .movements = 1};
        QTest::newRow("card") << (FakePcsc::card | FakePcsc::inUse) << WatchedReader{.name = reader, .hasCard = true};
        QTest::newRow("mute card") << (FakePcsc::card | FakePcsc::mute)
                                   << WatchedReader{.name = reader, .hasCard = true, .isMute = true};
        QTest::newRow("lost") << FakePcsc::lost << WatchedReader{.name = reader, .isConnected = false};
    }

    void theFirstAnswerComesAtOnce()
    {
        QFETCH(unsigned long, state);
        QFETCH(WatchedReader, watched);
        Subject subject;
        subject.service.setState(reader, state);
        QCOMPARE(subject.events.next(), answerWith({watched}));
    }

    void withoutReadersTheFirstAnswerComesAtOnce()
    {
        Subject subject;
        QCOMPARE(subject.events.next(), answerWith(QList<WatchedReader>()));
    }

    void laterAnswersComeWithChanges()
    {
        Subject subject;
        subject.service.setState(reader, FakePcsc::empty);
        QVERIFY(subject.events.next().has_value());
        auto inserted = subject.next();
        QVERIFY(subject.service.isWaitedFor());
        subject.service.setState(reader, FakePcsc::card | oneMovement);
        QCOMPARE(subject.answerOf(std::move(inserted)),
                 answerWith({{.name = reader, .hasCard = true, .movements = 1}}));
        auto unplugged = subject.next();
        QVERIFY(subject.service.isWaitedFor());
        subject.service.unplug(reader);
        QCOMPARE(subject.answerOf(std::move(unplugged)), answerWith({{.name = reader, .isConnected = false}}));
        QCOMPARE(subject.events.next(), answerWith(QList<WatchedReader>()));
        auto plugged = subject.next();
        QVERIFY(subject.service.isWaitedFor());
        subject.service.setState(reader, FakePcsc::empty);
        QCOMPARE(subject.answerOf(std::move(plugged)), answerWith(QList<WatchedReader>()));
        QCOMPARE(subject.events.next(), answerWith({{.name = reader}}));
    }

    void aReaderConnectedBetweenTheListAndTheWaitIsFound()
    {
        Subject subject;
        subject.service.setState(reader, FakePcsc::empty);
        QVERIFY(subject.events.next().has_value());
        const QByteArray other = "Alcor AU9540 01 00";
        subject.service.plugInAfterList(other);
        QCOMPARE(subject.answerOf(subject.next()), answerWith({{.name = reader}, {.name = other}}));
    }

    void aReplacedServiceIsUsedWithoutReportingAnAbsence()
    {
        Subject subject;
        subject.service.setState(reader, FakePcsc::empty);
        QVERIFY(subject.events.next().has_value());
        auto next = subject.next();
        QVERIFY(subject.service.isWaitedFor());
        subject.service.restart();
        QCOMPARE(subject.answerOf(std::move(next)), answerWith({{.name = reader}}));
    }

    void anAbsentServiceIsReportedAndAskedAgainWhenItsSocketAppears_data()
    {
        QTest::addColumn<bool>("hasFolder");
        QTest::newRow("in its folder") << true;
        QTest::newRow("in a new folder") << false;
    }

    void anAbsentServiceIsReportedAndAskedAgainWhenItsSocketAppears()
    {
        QFETCH(bool, hasFolder);
        Subject subject;
        if (hasFolder)
            QVERIFY(QDir().mkdir(subject.folder()));
        subject.service.setState(reader, FakePcsc::empty);
        subject.service.stop();
        QCOMPARE(subject.events.next(), answerWith(CardFault::ServiceDown));
        auto next = subject.next();
        if (!hasFolder) {
            // The new folder causes an attempt, which is too early.
            QVERIFY(QDir().mkdir(subject.folder()));
            QCOMPARE(subject.answerOf(std::move(next)), answerWith(CardFault::ServiceDown));
            next = subject.next();
        }
        subject.service.start();
        QVERIFY(writeFile(subject.socket(), ""));
        QCOMPARE(subject.answerOf(std::move(next)), answerWith({{.name = reader}}));
    }

    void anAbsentServiceIsNotPolled()
    {
        Subject subject;
        QVERIFY(QDir().mkdir(subject.folder()));
        subject.service.stop();
        QCOMPARE(subject.events.next(), answerWith(CardFault::ServiceDown));
        const int attempts = subject.service.attempts();
        auto next = subject.next();
        QVERIFY(next.wait_for(300ms) == std::future_status::timeout);
        QCOMPARE(subject.service.attempts(), attempts);
        subject.events.cancel();
        QCOMPARE(subject.answerOf(std::move(next)), Answer());
    }

    void theWaitForAReaderCanBeCancelled()
    {
        Subject subject;
        QVERIFY(subject.events.next().has_value());
        auto next = subject.next();
        QVERIFY(subject.service.isWaitedFor());
        subject.events.cancel();
        QVERIFY(next.wait_for(10s) == std::future_status::ready);
        QCOMPARE(next.get(), Answer());
        QCOMPARE(subject.events.next(), Answer());
    }

    void theConnectionIsReleased()
    {
        FakePcsc service;
        {
            PcscEvents events("/nowhere/pcscd.comm");
            QVERIFY(events.next().has_value());
            QCOMPARE(service.contexts(), 1);
        }
        QCOMPARE(service.contexts(), 0);
    }
};

template class RunnableTests<tst_PcscEvents, QCoreApplication>;
#include "tst_pcscevents.moc"
