#pragma once

#include "platform/FileDescriptor.h"

#include <QObject>

#include <array>
#include <csignal>

/// Reports requests to end the application: SIGTERM, SIGINT, SIGHUP, the end of the session, and
/// QCoreApplication::quit(). One object at a time; needs the application object. Main thread.
class TerminationSignals final : public QObject
{
    Q_OBJECT

public:
    /// Installs signal handlers. Signals that were ignored at the start stay ignored (nohup, background jobs).
    explicit TerminationSignals(QObject* parent = nullptr);
    Q_DISABLE_COPY(TerminationSignals)
    /// Restores the signal handlers.
    ~TerminationSignals() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

    static constexpr std::array signalNumbers{SIGTERM, SIGINT, SIGHUP};

Q_SIGNALS:
    /// The receiver calls QCoreApplication::exit(0), which windows cannot refuse.
    void terminationRequested();

private:
    void takeNote();

    FileDescriptor m_wakeUp; // an event counter for the signal handler
    std::array<struct sigaction, signalNumbers.size()> m_actionsBefore{};
};
