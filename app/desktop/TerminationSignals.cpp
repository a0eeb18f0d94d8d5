#include "app/desktop/TerminationSignals.h"

#include <QCoreApplication>
#include <QEvent>
#include <QSocketNotifier>

#include <atomic>
#include <cerrno>
#include <cstdint>

#include <sys/eventfd.h>
#include <unistd.h>

namespace {

// A signal handler has no other access to the descriptor.
constinit std::atomic<int> wakeUpDescriptor{-1};

void wakeUp(int /*signal*/)
{
    const int error = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(wakeUpDescriptor.load(), &one, sizeof one);
    errno = error;
}

} // namespace

TerminationSignals::TerminationSignals(QObject* parent)
    : QObject(parent)
    , m_wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    // The end of a session arrives as a quit event, which would first ask each window to close.
    QCoreApplication::instance()->installEventFilter(this);
    // Otherwise the end of a file dialog's background job would quit the application while no window is visible.
    QCoreApplication::setQuitLockEnabled(false);

    const auto* const notifier = new QSocketNotifier(m_wakeUp.get(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &TerminationSignals::takeNote);
    wakeUpDescriptor = m_wakeUp.get();

    struct sigaction action{};
    action.sa_handler = wakeUp;
    action.sa_flags = SA_RESTART;
    for (std::size_t index = 0; index < signalNumbers.size(); ++index) {
        sigaction(signalNumbers[index], nullptr, &m_actionsBefore[index]);
        if (m_actionsBefore[index].sa_handler != SIG_IGN)
            sigaction(signalNumbers[index], &action, nullptr);
    }
}

TerminationSignals::~TerminationSignals()
{
    for (std::size_t index = 0; index < signalNumbers.size(); ++index)
        sigaction(signalNumbers[index], &m_actionsBefore[index], nullptr);
    wakeUpDescriptor = -1;
}

bool TerminationSignals::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != QCoreApplication::instance() || event->type() != QEvent::Quit)
        return QObject::eventFilter(watched, event);
    Q_EMIT terminationRequested();
    return true;
}

void TerminationSignals::takeNote()
{
    std::uint64_t count = 0;
    if (read(m_wakeUp.get(), &count, sizeof count) == sizeof count)
        Q_EMIT terminationRequested();
}
