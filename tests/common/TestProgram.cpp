// main() of the test programs: `program tst_name [QtTest's arguments]` runs the tests of that class.
#include "tests/common/RunnableTests.h"

#include <QByteArray>
#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>

#ifdef __SANITIZE_THREAD__
#include <csignal>

#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using Runs = std::map<QByteArray, TestRun>;

// A local object, because the classes are added before main() in any order.
Runs& runs()
{
    static Runs all;
    return all;
}

#ifdef __SANITIZE_THREAD__
// Qt is not instrumented, so ThreadSanitizer cannot see how Qt's threads synchronise. QtTest has one such thread:
// a watchdog, which is not started when the program is traced by a debugger. So the program traces itself. Remaining
// reports are about Pelmora's code, and no suppressions are needed.
// Returns the exit status of the traced program in the tracing one, and nothing in the traced one.
std::optional<int> watchedByItself()
{
    const pid_t watched = fork();
    if (watched > 0) {
        int status = 0;
        while (waitpid(watched, &status, 0) == watched && WIFSTOPPED(status)) {
            const int signal = WSTOPSIG(status) == SIGTRAP ? 0 : WSTOPSIG(status);
            ptrace(PTRACE_CONT, watched, nullptr, signal);
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    return std::nullopt;
}
#endif

} // namespace

bool addRunnableTests(const char* name, TestRun run)
{
    runs().emplace(QByteArray(name).toLower(), run);
    return true;
}

int main(int argc, char** argv)
{
    const auto found = argc > 1 ? runs().find(QByteArray(argv[1]).toLower()) : runs().end();
    if (found == runs().end()) {
        std::fputs("Name one of these classes of tests, then QtTest's arguments:\n", stderr);
        for (const auto& [name, run] : runs())
            std::fprintf(stderr, "%s\n", name.constData());
        return EXIT_FAILURE;
    }
#ifdef __SANITIZE_THREAD__
    if (const std::optional<int> status = watchedByItself())
        return *status;
#endif
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    argv[1] = argv[0];
    return found->second(argc - 1, argv + 1);
}
