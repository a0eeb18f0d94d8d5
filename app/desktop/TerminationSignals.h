#pragma once

#include "platform/FileDescriptor.h"

#include <QObject>

#include <array>
#include <csignal>

/// Tells when the application is to end for reasons outside of it: a signal (SIGTERM, SIGINT, SIGHUP), the end of the
/// session, or any call of QCoreApplication::quit(). One at a time; needs the application object. Main thread.
class TerminationSignals final : public QObject
{
    Q_OBJECT

public:
    /// Takes the signals over; those that the starting program had set to be ignored stay so (nohup, background jobs).
    explicit TerminationSignals(QObject* parent = nullptr);
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;
    /// Gives the signals back.
    ~TerminationSignals() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

    /// The signals that end the application.
    static constexpr std::array signalNumbers{SIGTERM, SIGINT, SIGHUP};

Q_SIGNALS:
    /// To be answered with QCoreApplication::exit(0), which no window can refuse.
    void terminationRequested();

private:
    void takeNote();

    FileDescriptor m_wakeUp; // an event counter that the signal handler writes to
    std::array<struct sigaction, signalNumbers.size()> m_actionsBefore{};
};
