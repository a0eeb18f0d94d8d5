#pragma once

#include <QCoreApplication>
#include <QTest>

#ifdef __SANITIZE_THREAD__
#include <csignal>

#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

// ThreadSanitizer cannot see how Qt's own threads synchronise (Qt is not instrumented), and QtTest has one such thread:
// a watchdog, which it leaves out when a debugger watches the program. So the program watches itself: reports that are
// left are about our code, and nothing has to be suppressed.

/// main() of a test of the channel.
template <typename Test>
int runChannelTest(int argc, char* argv[])
{
#ifdef __SANITIZE_THREAD__
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
#endif
    const QCoreApplication application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}
