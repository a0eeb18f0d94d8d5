#include "card/client/ServiceProcess.h"

#include "card/client/ChannelLimits.h"
#include "card/client/ServiceEnvironment.h"
#include "platform/NativePath.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

// glibc 2.36's header has no C linkage.
extern "C" {
#include <sys/pidfd.h>
}

namespace {

constexpr int firstFreeDescriptor = 3; // after standard input, output and error
constexpr int exitCodeCannotExecute = 127;

struct Pipe
{
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

std::error_code lastError()
{
    return {errno, std::system_category()};
}

/// Moves a descriptor above 2: a program may be started without 0, 1 and 2, where the child's pipes go.
bool moveAboveStandard(FileDescriptor& descriptor)
{
    if (descriptor.get() >= firstFreeDescriptor)
        return true;
    descriptor = FileDescriptor(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, firstFreeDescriptor));
    return descriptor.isValid();
}

std::expected<Pipe, std::error_code> makePipe()
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        return std::unexpected(lastError());
    Pipe pipe{.readEnd = FileDescriptor(ends[0]), .writeEnd = FileDescriptor(ends[1])};
    if (!moveAboveStandard(pipe.readEnd) || !moveAboveStandard(pipe.writeEnd))
        return std::unexpected(lastError());
    return pipe;
}

bool setNonBlocking(const FileDescriptor& descriptor)
{
    return fcntl(descriptor.get(), F_SETFL, O_NONBLOCK) == 0;
}

/// A null-terminated list for exec. The texts must outlive it.
std::vector<char*> endedList(std::vector<std::string>& texts)
{
    std::vector<char*> list;
    list.reserve(texts.size() + 1);
    for (std::string& text : texts)
        list.push_back(text.data());
    list.push_back(nullptr);
    return list;
}

/// Made before the fork.
struct ChildSetup
{
    const char* program = nullptr;
    char* const* arguments = nullptr;
    char* const* environment = nullptr;
    int input = -1;
    int output = -1;
    int errors = -1;
    int report = -1;
    pid_t parent = -1;
    sigset_t noSignals{};
    struct sigaction defaultAction{};
};

/// Runs in the child until exec. The child shares the parent's memory: it makes system calls only and writes nothing.
/// Signal handlers are reset before signals are unblocked, and so are ignored signals.
[[noreturn, gnu::noinline]] void becomeService(const ChildSetup& setup)
{
    for (int signal = 1; signal < NSIG; ++signal)
        sigaction(signal, &setup.defaultAction, nullptr);

    // PR_SET_PDEATHSIG has no effect if the parent has ended already: getppid() detects that.
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == setup.parent && dup2(setup.input, STDIN_FILENO) >= 0 &&
        dup2(setup.output, STDOUT_FILENO) >= 0 && dup2(setup.errors, STDERR_FILENO) >= 0) {
        // Closes the application's descriptors. A kernel without close_range relies on O_CLOEXEC.
        close_range(firstFreeDescriptor, UINT_MAX, CLOSE_RANGE_CLOEXEC);
        pthread_sigmask(SIG_SETMASK, &setup.noSignals, nullptr);
        execve(setup.program, setup.arguments, setup.environment);
    }
    [[maybe_unused]] const ssize_t written = write(setup.report, &errno, sizeof errno);
    _exit(exitCodeCannotExecute);
}

/// Starts a child in becomeService; -1 on failure.
pid_t spawn(const ChildSetup& setup)
{
    // Signal handlers must not run in the child while memory is shared.
    sigset_t allSignals{};
    sigset_t before{};
    sigfillset(&allSignals);
    pthread_sigmask(SIG_SETMASK, &allSignals, &before);
    // vfork takes 0.1 ms at any size of the application; fork takes 1.2 ms at 100 MiB, and page faults after it.
    // becomeService neither writes memory nor returns, so vfork is safe.
    // NOLINTBEGIN(bugprone-unsafe-functions,cert-msc24-c,cert-msc33-c,clang-analyzer-*)
    const pid_t child = vfork();
    if (child == 0)
        becomeService(setup);
    // NOLINTEND(bugprone-unsafe-functions,cert-msc24-c,cert-msc33-c,clang-analyzer-*)
    const int error = errno;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return child;
}

/// The error that the child reported; 0 when exec succeeded.
int readReport(const FileDescriptor& report)
{
    int error = 0;
    while (read(report.get(), &error, sizeof error) < 0 && errno == EINTR) {
    }
    return error;
}

void reapChild(pid_t child)
{
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

} // namespace

std::vector<std::string> systemArguments(const ServiceCommand& command)
{
    std::vector<std::string> arguments;
    arguments.reserve(1 + static_cast<std::size_t>(command.arguments.size()));
    arguments.push_back(bytesOfPath(command.program).toStdString());
    for (const QString& argument : command.arguments)
        arguments.push_back(bytesOfPath(argument).toStdString());
    return arguments;
}

std::string ProcessEnd::description() const
{
    if (!signal)
        return "exit status " + std::to_string(exitStatus);
    const char* name = sigabbrev_np(*signal);
    return "signal " + std::to_string(*signal) + (name == nullptr ? std::string() : std::string(" (SIG") + name + ')');
}

std::expected<ServiceProcess, std::error_code> ServiceProcess::start(std::vector<std::string> command)
{
    auto input = makePipe();
    auto output = makePipe();
    auto errors = makePipe();
    auto report = makePipe();
    for (const auto* pipe : {&input, &output, &errors, &report}) {
        if (!*pipe)
            return std::unexpected(pipe->error());
    }
    if (!setNonBlocking(input->writeEnd) || !setNonBlocking(output->readEnd) || !setNonBlocking(errors->readEnd))
        return std::unexpected(lastError());

    std::vector<std::string> variables = serviceEnvironment();
    const std::vector<char*> arguments = endedList(command);
    const std::vector<char*> environment = endedList(variables);

    ChildSetup setup{.program = arguments.front(),
                     .arguments = arguments.data(),
                     .environment = environment.data(),
                     .input = input->readEnd.get(),
                     .output = output->writeEnd.get(),
                     .errors = errors->writeEnd.get(),
                     .report = report->writeEnd.get(),
                     .parent = getpid()};
    sigemptyset(&setup.noSignals);
    setup.defaultAction.sa_handler = SIG_DFL;

    const pid_t child = spawn(setup);
    if (child < 0)
        return std::unexpected(lastError());
    report->writeEnd.reset();
    if (const int error = readReport(report->readEnd); error != 0) {
        reapChild(child);
        return std::unexpected(std::error_code(error, std::system_category()));
    }

    ServiceProcess service;
    service.m_process = FileDescriptor(pidfd_open(child, 0));
    if (!service.m_process.isValid()) {
        const std::error_code error = lastError();
        ::kill(child, SIGKILL);
        reapChild(child);
        return std::unexpected(error);
    }
    service.m_input = std::move(input->writeEnd);
    service.m_output = std::move(output->readEnd);
    service.m_errors = std::move(errors->readEnd);
    return service;
}

ServiceProcess& ServiceProcess::operator=(ServiceProcess&& other) noexcept
{
    if (this != &other) {
        end();
        m_input = std::move(other.m_input);
        m_output = std::move(other.m_output);
        m_errors = std::move(other.m_errors);
        m_process = std::move(other.m_process);
        m_end = other.m_end;
    }
    return *this;
}

ServiceProcess::~ServiceProcess()
{
    end();
}

void ServiceProcess::kill() const
{
    if (m_process.isValid())
        pidfd_send_signal(m_process.get(), SIGKILL, nullptr, 0);
}

bool ServiceProcess::reap()
{
    if (!m_process.isValid())
        return true;
    siginfo_t information{};
    const int result =
        waitid(static_cast<idtype_t>(P_PIDFD), static_cast<id_t>(m_process.get()), &information, WEXITED | WNOHANG);
    if (result == 0 && information.si_pid != 0)
        m_end = information.si_code == CLD_EXITED
                    ? ProcessEnd{.signal = std::nullopt, .exitStatus = information.si_status}
                    : ProcessEnd{.signal = information.si_status};
    // ECHILD: the application ignores SIGCHLD, and the kernel has reaped the child.
    if ((result == 0 && information.si_pid != 0) || (result != 0 && errno == ECHILD))
        m_process.reset();
    return !m_process.isValid();
}

void ServiceProcess::end()
{
    if (reap())
        return;
    kill();
    pollfd ended{.fd = m_process.get(), .events = POLLIN, .revents = 0};
    while (poll(&ended, 1, static_cast<int>(killPatience.count())) < 0 && errno == EINTR) {
    }
    [[maybe_unused]] const bool reaped = reap();
}
