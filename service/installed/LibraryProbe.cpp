#include "service/installed/LibraryProbe.h"

#include "platform/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int reportInChild = STDERR_FILENO + 1;
constexpr char endOfReport = '\0'; // a process started by the trial may keep the pipe open
constexpr qsizetype maximumReport = 4096;

/// Discards what the trial prints, and closes inherited descriptors.
bool standAlone(const FileDescriptor& report)
{
    const FileDescriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    if (!nothing.isValid() || ::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0)
        return false;
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal)
        ::sigaction(signal, &byDefault, nullptr);
    const int kept = ::fcntl(report.get(), F_DUPFD_CLOEXEC, reportInChild + 1);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::dup2(nothing.get(), standard) < 0)
            return false;
    }
    return ::dup3(kept, reportInChild, O_CLOEXEC) >= 0 &&
           ::syscall(SYS_close_range, reportInChild + 1, UINT_MAX, 0) == 0;
}

[[noreturn]] void becomeTrial(const FileDescriptor& report, const std::function<QString()>& trial)
{
    if (!standAlone(report))
        ::_exit(EXIT_FAILURE);
    QByteArray reason = trial().toUtf8();
    reason.truncate(maximumReport - 1);
    reason += endOfReport;
    const ssize_t written = ::write(reportInChild, reason.constData(), static_cast<std::size_t>(reason.size()));
    ::_exit(written == reason.size() ? EXIT_SUCCESS : EXIT_FAILURE);
}

/// Reads until the end of the report, the end of the child, or the deadline.
QByteArray readReport(const FileDescriptor& report, Clock::time_point deadline)
{
    QByteArray text;
    while (!text.endsWith(endOfReport) && text.size() < maximumReport) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd ready{.fd = report.get(), .events = POLLIN, .revents = 0};
        const int found = ::poll(&ready, 1, static_cast<int>(std::max(left, std::chrono::milliseconds{0}).count()));
        if (found < 0 && errno == EINTR)
            continue;
        std::array<char, maximumReport> slice{};
        const ssize_t count = found > 0 ? ::read(report.get(), slice.data(), slice.size()) : 0;
        if (count <= 0)
            break;
        text.append(slice.data(), count);
    }
    return text;
}

QString lastReason()
{
    return QString::fromLocal8Bit(std::system_category().message(errno).c_str());
}

/// How a trial without a report ended.
QString describe(int status, bool isLate, std::chrono::milliseconds patience)
{
    if (isLate)
        return u"rien en %1 s"_s.arg(std::chrono::duration<double>(patience).count());
    if (WIFSIGNALED(status)) {
        const char* const name = ::sigdescr_np(WTERMSIG(status));
        return u"l’essai est interrompu par le signal %1 (%2)"_s.arg(WTERMSIG(status))
            .arg(QString::fromLatin1(name != nullptr ? name : "?"));
    }
    return u"l’essai se termine avec le code %1"_s.arg(WEXITSTATUS(status));
}

} // namespace

std::expected<void, QString> tryInChild(const std::function<QString()>& trial, std::chrono::milliseconds patience)
{
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return std::unexpected(lastReason());
    const FileDescriptor output(ends[0]);
    FileDescriptor input(ends[1]);
    const Clock::time_point deadline = Clock::now() + patience;
    pid_t child = -1;
    QByteArray report;
    QString failure;
    // PR_SET_PDEATHSIG kills the child when this thread ends: in the sandbox kill() may be refused.
    std::thread keeper([&] {
        child = ::fork();
        if (child == 0)
            becomeTrial(input, trial);
        if (child < 0)
            failure = lastReason();
        input.reset();
        report = readReport(output, deadline);
    });
    keeper.join();
    if (child < 0)
        return std::unexpected(failure);
    const bool isLate = report.isEmpty() && Clock::now() >= deadline;
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!report.endsWith(endOfReport))
        return std::unexpected(describe(status, isLate, patience));
    report.chop(1);
    return report.isEmpty() ? std::expected<void, QString>() : std::unexpected(QString::fromUtf8(report));
}
