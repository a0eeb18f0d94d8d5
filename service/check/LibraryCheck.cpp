#include "service/check/LibraryCheck.h"

#include "platform/FileDescriptor.h"
#include "service/check/LibraryTrial.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Clock = std::chrono::steady_clock;

namespace {

const QString endOfProcess = u"fin du processus"_s;

[[noreturn]] void becomeTrial(int notesTo, const QByteArray& path, const SandboxPlaces& places,
                              const RoundLimits& limits)
{
    const FileDescriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || !nothing.isValid() || ::dup2(nothing.get(), STDIN_FILENO) < 0)
        ::_exit(EXIT_FAILURE);
    // A library that leaves descriptors open is reported for that. With the usual limit it would fail first, because no
    // descriptor is free.
    constexpr rlim_t enoughDescriptors = 16'384;
    rlimit descriptors{};
    if (::getrlimit(RLIMIT_NOFILE, &descriptors) == 0) {
        descriptors.rlim_cur = std::min(descriptors.rlim_max, enoughDescriptors);
        static_cast<void>(::setrlimit(RLIMIT_NOFILE, &descriptors));
    }
    const TrialNotes notes(notesTo);
    {
        const Sandbox sandbox(places);
        if (const std::optional<QString> obstacles = sandbox.obstacles())
            notes.remark(*obstacles);
        std::thread([&] { LibraryTrial(path, limits, notes).run(); }).join();
        notes.write(TrialNote::Kind::Call, endOfProcess);
    }
    std::exit(EXIT_SUCCESS); // NOLINT(concurrency-mt-unsafe): the library's own code for the end is tried, too
}

/// The trial's process and its notes.
class RunningTrial final
{
public:
    RunningTrial(pid_t process, int notes, const LibraryCheckLimits& limits, CheckReport& report)
        : m_process(process)
        , m_life(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)))
        , m_notes(notes)
        , m_limits(&limits)
        , m_report(&report)
    {
    }

    /// Until it ends, or does not answer any more.
    void follow()
    {
        m_deadline = Clock::now() + m_patience;
        while (waitForNews()) {
        }
        const bool isLate = !m_hasEnded;
        if (isLate)
            ::kill(m_process, SIGKILL);
        int status = 0;
        while (::waitpid(m_process, &status, 0) < 0 && errno == EINTR) {
        }
        if (isLate)
            addEnd(u"ne rend pas la main en %1 s"_s.arg(std::chrono::duration<double>(m_patience).count()));
        else if (WIFSIGNALED(status))
            addEnd(u"le processus est interrompu par le signal %1 (%2)"_s.arg(WTERMSIG(status))
                       .arg(QString::fromLatin1(::sigdescr_np(WTERMSIG(status)))));
        else if (WEXITSTATUS(status) != EXIT_SUCCESS || m_place != endOfProcess)
            addEnd(u"le processus se termine avec le code %1"_s.arg(WEXITSTATUS(status)));
    }

private:
    /// Reads notes. False at the end of the process, or after the deadline.
    [[nodiscard]] bool waitForNews()
    {
        std::array ready{pollfd{.fd = m_notes, .events = POLLIN, .revents = 0},
                         pollfd{.fd = m_life.get(), .events = POLLIN, .revents = 0}};
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_deadline - Clock::now());
        const int found = ::poll(ready.data(), ready.size(), static_cast<int>(std::max(left.count(), std::int64_t{0})));
        if (found < 0)
            return errno == EINTR;
        // A process that the library has started may keep the pipe open.
        m_hasEnded = (ready[1].revents & POLLIN) != 0;
        if ((ready[0].revents & POLLIN) != 0)
            return readNotes();
        return found > 0 && !m_hasEnded;
    }

    [[nodiscard]] bool readNotes()
    {
        std::array<char, 4096> slice{};
        const ssize_t count = ::read(m_notes, slice.data(), slice.size());
        if (count < 0)
            return errno == EINTR;
        if (count == 0) {
            m_notes = -1; // which poll() ignores: the process's end is still to come
            return !m_hasEnded;
        }
        m_text.append(slice.data(), count);
        for (qsizetype end = m_text.indexOf('\n'); end >= 0; end = m_text.indexOf('\n')) {
            take(decodeTrialNote(QByteArrayView(m_text).first(end)));
            m_text.remove(0, end + 1);
        }
        return true;
    }

    void take(const TrialNote& note)
    {
        switch (note.kind) {
        case TrialNote::Kind::Call:
        case TrialNote::Kind::Read:
            m_place = note.place;
            m_isInCall = true;
            m_patience = note.kind == TrialNote::Kind::Read ? m_limits->calls.read : m_limits->calls.other;
            break;
        case TrialNote::Kind::Return:
            m_isInCall = false;
            m_patience = ownWork;
            break;
        case TrialNote::Kind::Fault:
            m_report->faults.append({note.place, note.text});
            break;
        case TrialNote::Kind::Remark:
            m_report->remarks.append(note.text);
            break;
        case TrialNote::Kind::Fact:
            m_report->facts.append({note.place, note.text});
            break;
        }
        m_deadline = Clock::now() + m_patience;
    }

    void addEnd(const QString& reason)
    {
        const bool isBetween = !m_isInCall && !m_place.isEmpty();
        m_report->faults.append({isBetween ? u"après %1"_s.arg(m_place) : m_place, reason});
        if (m_place != endOfProcess)
            m_report->remarks.append(u"les contrôles suivants n’ont pas été faits"_s);
    }

    // Between calls the check itself works.
    static constexpr std::chrono::milliseconds ownWork{60'000};

    pid_t m_process;
    FileDescriptor m_life;
    int m_notes;
    const LibraryCheckLimits* m_limits;
    CheckReport* m_report;
    Clock::time_point m_deadline;
    std::chrono::milliseconds m_patience = ownWork;
    QByteArray m_text; // of an incomplete note
    QString m_place;   // of the last call
    bool m_isInCall = false;
    bool m_hasEnded = false;
};

QString reasonOf(int error)
{
    return QString::fromLocal8Bit(std::system_category().message(error).c_str());
}

} // namespace

CheckReport checkLibrary(const QByteArray& path, const SandboxPlaces& places, const LibraryCheckLimits& limits)
{
    CheckReport report{.subject = u"une bibliothèque de lecture"_s, .facts = {}, .remarks = {}, .faults = {}};
    report.facts.append({u"Fichier"_s, QFile::decodeName(path)});
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        report.faults.append({{}, reasonOf(errno)});
        return report;
    }
    const FileDescriptor notes(ends[0]);
    FileDescriptor trial(ends[1]);
    const pid_t process = ::fork();
    if (process == 0)
        becomeTrial(trial.get(), path, places, limits.rounds);
    if (process < 0) {
        report.faults.append({{}, reasonOf(errno)});
        return report;
    }
    trial.reset();
    RunningTrial(process, notes.get(), limits, report).follow();
    return report;
}
