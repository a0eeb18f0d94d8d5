#pragma once

#include <QByteArray>
#include <QStringList>

#include <array>
#include <csignal>

/// The parts of the process that a library must leave as they are.
class ProcessState final
{
public:
    ProcessState() { static_cast<void>(changes()); }

    /// What has changed since the last call, in French.
    [[nodiscard]] QStringList changes();

private:
    std::array<struct sigaction, NSIG> m_signals{};
    QByteArray m_locale;
    QByteArray m_folder;
};

/// Takes over standard output and standard error.
class CapturedOutput final
{
public:
    CapturedOutput();

    /// What was printed since the last call.
    [[nodiscard]] QByteArray news();

private:
    int m_file; // open until the process ends
    qint64 m_read = 0;
};
