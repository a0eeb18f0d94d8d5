#pragma once

#include "platform/FileDescriptor.h"

#include <QString>
#include <QStringList>

#include <expected>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <sys/types.h>

/// A program and its arguments. The program is a path; no search path is looked at.
struct ServiceCommand
{
    QString program;
    QStringList arguments;
};

/// The command as the system takes it: the program and its arguments in the file system's encoding.
[[nodiscard]] std::vector<std::string> systemArguments(const ServiceCommand& command);

/// How a child ended: by a signal, or with an exit status.
struct ProcessEnd
{
    std::optional<int> signal;
    int exitStatus = 0;

    /// "signal 11 (SIGSEGV)", "exit status 3".
    [[nodiscard]] std::string description() const;
};

/// A child process with its standard input, output and error on pipes. The child is killed when the thread that started
/// it ends, however it ends: no orphan is left. Owned by that thread.
class ServiceProcess final
{
public:
    /// Starts the program that the first text names, with what a service is given of the environment; the failure says
    /// why it could not be executed (absent, not executable...).
    [[nodiscard]] static std::expected<ServiceProcess, std::error_code> start(std::vector<std::string> command);

    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess(ServiceProcess&& other) noexcept = default;
    ServiceProcess& operator=(const ServiceProcess&) = delete;
    ServiceProcess& operator=(ServiceProcess&& other) noexcept;
    /// Kills the child if it is still there.
    ~ServiceProcess();

    /// This side's ends of the pipes, which never block; -1 once closed.
    [[nodiscard]] int standardInput() const { return m_input.get(); }
    [[nodiscard]] int standardOutput() const { return m_output.get(); }
    [[nodiscard]] int standardError() const { return m_errors.get(); }
    /// Readable (for poll) once the child has ended.
    [[nodiscard]] int endOfProcess() const { return m_process.get(); }

    void closeStandardInput() { m_input.reset(); }
    void closeStandardOutput() { m_output.reset(); }
    void closeStandardError() { m_errors.reset(); }

    /// SIGKILL; nothing when the child has ended.
    void kill() const;

    /// Takes an ended child off the system's list; false while it runs.
    [[nodiscard]] bool reap();
    /// How the child ended, once it was reaped. Absent where the application ignores its children's ends.
    [[nodiscard]] const std::optional<ProcessEnd>& howItEnded() const { return m_end; }

private:
    ServiceProcess() = default;
    void end();

    FileDescriptor m_input;
    FileDescriptor m_output;
    FileDescriptor m_errors;
    FileDescriptor m_process; // a process descriptor; none once the child was reaped
    std::optional<ProcessEnd> m_end;
};
