#include "update/client/UpdateProgram.h"

#include "platform/NativePath.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

// glibc 2.36's header has no C linkage.
extern "C" {
#include <sys/pidfd.h>
}

namespace {

constexpr int firstFreeDescriptor = 3; // after standard input, output and error

std::error_code errorOf(int code)
{
    return {code, std::system_category()};
}

// In a new session: an interrupt of the terminal goes to the application only.
int spawn(pid_t& process, const char* program, char* const* arguments, int input)
{
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    int error = posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    if (error == 0)
        error = posix_spawn(&process, program, &actions, &attributes, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return error;
}

} // namespace

std::expected<std::unique_ptr<UpdateProgram>, std::error_code> UpdateProgram::start(const QString& program,
                                                                                    const QStringList& arguments)
{
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return std::unexpected(errorOf(errno));
    FileDescriptor ours(ends[0]);
    const FileDescriptor lent(ends[1]);
    // A copy above the standard descriptors: dup2 onto itself would not clear close-on-exec.
    const FileDescriptor theirs(fcntl(lent.get(), F_DUPFD_CLOEXEC, firstFreeDescriptor));

    // The name in the system log and on the desktop.
    std::vector<QByteArray> words{"pelmora"};
    words.reserve(static_cast<std::size_t>(arguments.size()) + 1);
    for (const QString& argument : arguments)
        words.push_back(bytesOfPath(argument));
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (QByteArray& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);

    pid_t process = 0;
    if (const int error = spawn(process, bytesOfPath(program).constData(), pointers.data(), theirs.get()); error != 0)
        return std::unexpected(errorOf(error));
    FileDescriptor end(pidfd_open(process, 0));
    if (!end.isValid())
        return std::unexpected(errorOf(errno));
    return std::unique_ptr<UpdateProgram>(new UpdateProgram(process, std::move(ours), std::move(end)));
}

UpdateProgram::UpdateProgram(pid_t process, FileDescriptor input, FileDescriptor end)
    : m_process(process)
    , m_input(std::move(input))
    , m_end(std::move(end))
{
    const auto* const notifier = new QSocketNotifier(m_end.get(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &UpdateProgram::reap);
}

void UpdateProgram::showWindow()
{
    // EAGAIN: enough requests are waiting already.
    if (send(m_input.get(), "\n", 1, MSG_NOSIGNAL | MSG_DONTWAIT) < 0 && errno != EAGAIN)
        m_hasClosedInput = true;
}

void UpdateProgram::reap()
{
    waitpid(m_process, nullptr, 0);
    char nothing = 0;
    // ECONNRESET means that the other side has not read everything.
    const bool hasLeftSome = recv(m_input.get(), &nothing, 1, MSG_DONTWAIT) < 0 && errno == ECONNRESET;
    Q_EMIT ended(m_hasClosedInput || hasLeftSome);
}
