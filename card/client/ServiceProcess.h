#pragma once

#include "platform/FileDescriptor.h"

#include <QStringList>

#include <expected>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <sys/types.h>

/// A program, as a path, and its arguments.
struct ServiceCommand
{
    QString program;
    QStringList arguments;
};

/// Program and arguments in the file system's encoding.
[[nodiscard]] std::vector<std::string> systemArguments(const ServiceCommand& command);

/// How a child ended.
struct ProcessEnd
{
    std::optional<int> signal;
    int exitStatus = 0;

    /// "signal 11 (SIGSEGV)", "exit status 3".
    [[nodiscard]] std::string description() const;
};

/// A child process with pipes for standard input, output and error. The kernel kills it when the thread that started it
/// ends. Used by that thread only.
class ServiceProcess final
{
public:
    /// Starts the program named by the first text, with a reduced environment.
    [[nodiscard]] static std::expected<ServiceProcess, std::error_code> start(std::vector<std::string> command);

    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess(ServiceProcess&& other) noexcept = default;
    ServiceProcess& operator=(const ServiceProcess&) = delete;
    ServiceProcess& operator=(ServiceProcess&& other) noexcept;
    /// Kills the child if it still runs.
    ~ServiceProcess();

    /// This process's ends of the pipes, which never block; -1 once closed.
    [[nodiscard]] int standardInput() const { return m_input.get(); }
    [[nodiscard]] int standardOutput() const { return m_output.get(); }
    [[nodiscard]] int standardError() const { return m_errors.get(); }
    /// Readable (for poll) when the child has ended.
    [[nodiscard]] int endOfProcess() const { return m_process.get(); }

    void closeStandardInput() { m_input.reset(); }
    void closeStandardOutput() { m_output.reset(); }
    void closeStandardError() { m_errors.reset(); }

    /// Sends SIGKILL unless the child was reaped.
    void kill() const;

    /// Reaps an ended child; false while it runs.
    [[nodiscard]] bool reap();
    /// Set when the child was reaped; absent when the application ignores SIGCHLD.
    [[nodiscard]] const std::optional<ProcessEnd>& howItEnded() const { return m_end; }

private:
    ServiceProcess() = default;
    void end();

    FileDescriptor m_input;
    FileDescriptor m_output;
    FileDescriptor m_errors;
    FileDescriptor m_process; // a process descriptor; invalid once the child was reaped
    std::optional<ProcessEnd> m_end;
};
