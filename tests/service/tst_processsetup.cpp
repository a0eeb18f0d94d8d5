#include "service/ProcessSetup.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/service/Descriptors.h"

#include <QTest>

#include <array>
#include <cerrno>

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using PipeEnds = std::array<int, 2>;

bool say(int descriptor, QByteArrayView text)
{
    return ::write(descriptor, text.data(), static_cast<std::size_t>(text.size())) == text.size();
}

/// Uses the descriptors as a service does, and prints as a library might.
[[noreturn]] void becomeService(const PipeEnds& input, const PipeEnds& output, const PipeEnds& errors)
{
    const bool isPlugged = ::dup2(input[0], STDIN_FILENO) >= 0 && ::dup2(output[1], STDOUT_FILENO) >= 0 &&
                           ::dup2(errors[1], STDERR_FILENO) >= 0;
    const std::optional<ChannelDescriptors> channel = isPlugged ? takeStandardChannel() : std::nullopt;
    char request = 0;
    char chatter = 0;
    const bool isDone = channel && say(STDOUT_FILENO, "bavardage") && say(channel->replies.get(), "reply") &&
                        ::read(channel->requests.get(), &request, 1) == 1 && request == 'r' &&
                        ::read(STDIN_FILENO, &chatter, 1) == 0;
    ::_exit(isDone ? 0 : 1);
}

/// Whether a write beyond the file size limit fails with an error.
bool writesBeyondTheLimit()
{
    const int file = ::memfd_create("file", MFD_CLOEXEC);
    const rlimit nothing{0, RLIM_INFINITY};
    return file >= 0 && ::setrlimit(RLIMIT_FSIZE, &nothing) == 0 && ::write(file, "x", 1) < 0 && errno == EFBIG;
}

} // namespace

class tst_ProcessSetup : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void printedTextsGoToStandardErrorAndOnlyRepliesToTheChannel()
    {
        PipeEnds input{};
        PipeEnds output{};
        PipeEnds errors{};
        QVERIFY(::pipe(input.data()) == 0 && ::pipe(output.data()) == 0 && ::pipe(errors.data()) == 0);
        QVERIFY(say(input[1], "r"));
        const pid_t child = ::fork();
        QVERIFY(child >= 0);
        if (child == 0)
            becomeService(input, output, errors);
        for (const int descriptor : {input[0], input[1], output[1], errors[1]})
            ::close(descriptor);

        QCOMPARE(everythingFrom(output[0]), QByteArray("reply"));
        QCOMPARE(everythingFrom(errors[0]), QByteArray("bavardage"));
        int status = -1;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QCOMPARE(status, 0);
        ::close(output[0]);
        ::close(errors[0]);
    }

    void aFileAtItsLimitIsAnErrorAndNotTheEnd()
    {
        const pid_t child = ::fork();
        QVERIFY(child >= 0);
        if (child == 0)
            ::_exit(protectProcess() && writesBeyondTheLimit() ? 0 : 1);
        int status = -1;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QCOMPARE(status, 0);
    }
};

template class RunnableTests<tst_ProcessSetup, void>;
#include "tst_processsetup.moc"
