#include "card/wire/ServiceVocabulary.h"
#include "service/ServiceLoop.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/Descriptors.h"

#include <QCoreApplication>
#include <QTest>

#include <array>
#include <csignal>

#include <fcntl.h>

using namespace Qt::StringLiterals;

namespace {

struct Pipe
{
    FileDescriptor read;
    FileDescriptor write;
};

Pipe makePipe()
{
    std::array<int, 2> ends{-1, -1};
    return ::pipe2(ends.data(), O_CLOEXEC) == 0 ? Pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])} : Pipe{};
}

struct LoopOutcome
{
    ServiceLoop::End end;
    QByteArray replies;
};

/// A library without readers, which is unusable from the start or after a read.
class EmptyLibrary final : public ReadingLibrary
{
public:
    explicit EmptyLibrary(bool isBeyondUse)
        : m_isBeyondUse(isBeyondUse)
    {
    }

    [[nodiscard]] std::optional<LibraryKind> initialise(LibraryMode) override { return LibraryKind::Embedded; }
    [[nodiscard]] QStringList readers() override { return {}; }
    [[nodiscard]] bool chooseReaders(const QString&, const QString&) override { return true; }
    [[nodiscard]] QString informations() override { return u"<informations/>"_s; }
    [[nodiscard]] std::expected<QString, ReadResult> readCard() override
    {
        m_isBeyondUse = true;
        return std::unexpected(ReadResult::CardMute);
    }
    [[nodiscard]] std::unique_ptr<ReaderWatch> watchReader(const ReaderReport& report) override
    {
        report(CardReaderState::NoReader);
        return nullptr;
    }
    [[nodiscard]] bool isBeyondUse() const override { return m_isBeyondUse; }

private:
    bool m_isBeyondUse;
};

ServiceCommands commandsWithoutReaders(bool areBeyondUse = false)
{
    return ServiceCommands(std::make_unique<EmptyLibrary>(areBeyondUse), {});
}

/// The replies and the end of a loop with these bytes as its input, which must fit into a pipe.
LoopOutcome outcomeOfLoop(const QByteArray& bytes)
{
    Pipe requests = makePipe();
    Pipe replies = makePipe();
    [[maybe_unused]] const ssize_t written =
        ::write(requests.write.get(), bytes.constData(), static_cast<std::size_t>(bytes.size()));
    {
        const FileDescriptor closed = std::move(requests.write);
    }
    ServiceLoop::End end{};
    {
        ServiceLoop loop(commandsWithoutReaders(), std::move(requests.read), std::move(replies.write));
        end = loop.run();
    }
    return {end, everythingFrom(replies.read.get())};
}

QByteArray encodedRequest(qint64 number, const std::optional<QCborMap>& body)
{
    return encodeServiceMessage({.number = number, .body = body});
}

QCborMap command(QLatin1StringView name)
{
    return {{ServiceWord::command, name}};
}

QByteArray noReaders(qint64 number)
{
    return encodedRequest(number,
                          QCborMap{{ServiceWord::status, ServiceWord::success}, {ServiceWord::readers, QCborArray()}});
}

} // namespace

class tst_ServiceLoop : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(std::signal(SIGPIPE, SIG_IGN) != SIG_ERR); }

    void theEndOfTheInputEndsTheLoop()
    {
        const LoopOutcome outcome = outcomeOfLoop({});
        QCOMPARE(outcome.end, ServiceLoop::End::Closed);
        QCOMPARE(outcome.replies, QByteArray());
    }

    void requestsAreAnsweredInTheirOrder()
    {
        const LoopOutcome outcome = outcomeOfLoop(encodedRequest(7, command(ServiceWord::readersList)) +
                                                  encodedRequest(3, command(ServiceWord::readersList)));
        QCOMPARE(outcome.end, ServiceLoop::End::Closed);
        QCOMPARE(outcome.replies, noReaders(7) + noReaders(3));
    }

    void anUnknownCommandIsAnsweredWithNull()
    {
        const LoopOutcome outcome = outcomeOfLoop(encodedRequest(1, command("eject"_L1)) +
                                                  encodedRequest(2, std::nullopt) + encodedRequest(3, QCborMap()));
        QCOMPARE(outcome.end, ServiceLoop::End::Closed);
        QCOMPARE(outcome.replies,
                 encodedRequest(1, std::nullopt) + encodedRequest(2, std::nullopt) + encodedRequest(3, std::nullopt));
    }

    void anIncompleteRequestAtTheEndIsDropped()
    {
        const QByteArray whole = encodedRequest(1, command(ServiceWord::readersList));
        for (qsizetype size = 1; size < whole.size(); ++size) {
            const LoopOutcome outcome = outcomeOfLoop(whole + whole.first(size));
            QCOMPARE(outcome.end, ServiceLoop::End::Closed);
            QCOMPARE(outcome.replies, noReaders(1));
        }
    }

    void malformedInputEndsTheLoopAfterEarlierAnswers_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("text") << QByteArray("bonjour");
        QTest::newRow("array of three") << QByteArray("\x83\x01\xF6\xF6");
        QTest::newRow("text as a number") << QByteArray("\x82\x61\x61\xF6");
        QTest::newRow("text as a body") << QByteArray("\x82\x01\x61\x61");
        QTest::newRow("number 0") << encodedRequest(0, command(ServiceWord::readersList));
        QTest::newRow("5 MiB announced") << QByteArray("\x82\x01\x7A\x00\x50\x00\x00", 7);
    }

    void malformedInputEndsTheLoopAfterEarlierAnswers()
    {
        QFETCH(QByteArray, bytes);
        const LoopOutcome outcome = outcomeOfLoop(encodedRequest(1, command(ServiceWord::readersList)) + bytes);
        QCOMPARE(outcome.end, ServiceLoop::End::Malformed);
        QCOMPARE(outcome.replies, noReaders(1));
    }

    void aLateCallIsAnsweredAndNothingAfterIt()
    {
        const QCborMap init{{ServiceWord::command, ServiceWord::init}, {ServiceWord::mode, u"0"_s}};
        const QCborMap choice{{ServiceWord::command, ServiceWord::setReaders},
                              {ServiceWord::vitaleReaderName, u"A"_s},
                              {ServiceWord::cpsReaderName, u"A"_s}};
        const QCborMap success{{ServiceWord::status, ServiceWord::success}};
        QCborMap initialised = success;
        initialised.insert(ServiceWord::embedded, ServiceWord::embeddedTrue);
        const QCborMap mute{{ServiceWord::status, ServiceWord::error}, {ServiceWord::result, 25}};
        const LoopOutcome outcome = outcomeOfLoop(encodedRequest(1, init) + encodedRequest(2, choice) +
                                                  encodedRequest(3, command(ServiceWord::vitaleRead)) +
                                                  encodedRequest(4, command(ServiceWord::readersList)));
        QCOMPARE(outcome.end, ServiceLoop::End::BeyondUse);
        QCOMPARE(outcome.replies, encodedRequest(1, initialised) +
                                      encodedRequest(0, readerMessage(CardReaderState::NoReader)) +
                                      encodedRequest(2, success) + encodedRequest(3, mute));
    }

    void aClosedOutputEndsTheLoop_data()
    {
        QTest::addColumn<bool>("isBeyondUse");
        QTest::addColumn<ServiceLoop::End>("end");
        QTest::newRow("at rest") << false << ServiceLoop::End::Closed;
        QTest::newRow("with a call that hangs") << true << ServiceLoop::End::BeyondUse;
    }

    void aClosedOutputEndsTheLoop()
    {
        QFETCH(bool, isBeyondUse);
        QFETCH(ServiceLoop::End, end);
        Pipe requests = makePipe();
        Pipe replies = makePipe();
        {
            const FileDescriptor closed = std::move(replies.read);
        }
        const QByteArray bytes = encodedRequest(1, command(ServiceWord::readersList));
        QCOMPARE(::write(requests.write.get(), bytes.constData(), static_cast<std::size_t>(bytes.size())),
                 bytes.size());
        ServiceLoop loop(commandsWithoutReaders(isBeyondUse), std::move(requests.read), std::move(replies.write));
        QCOMPARE(loop.run(), end);
    }

    void aDescriptorThatCannotBeReadIsAFailure()
    {
        ServiceLoop loop(commandsWithoutReaders(), FileDescriptor(), FileDescriptor());
        QCOMPARE(loop.run(), ServiceLoop::End::Failed);
    }
};

template class RunnableTests<tst_ServiceLoop, QCoreApplication>;
#include "tst_serviceloop.moc"
