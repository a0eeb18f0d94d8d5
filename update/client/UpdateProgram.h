#pragma once

#include "platform/FileDescriptor.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <expected>
#include <memory>
#include <system_error>

#include <sys/types.h>

/// The running program for updates. Its standard input comes from here: each byte asks for its window, and the end of
/// the input, which the end of this process brings about too, is the end of the program. Main thread only.
class UpdateProgram final : public QObject
{
    Q_OBJECT

public:
    /// Starts it; the failure says why it could not be executed.
    [[nodiscard]] static std::expected<std::unique_ptr<UpdateProgram>, std::error_code>
    start(const QString& program, const QStringList& arguments);

    /// Asks it to show its window.
    void showWindow();

Q_SIGNALS:
    /// It has ended, of itself or not; with a request that it has not read, or without.
    void ended(bool hasLeftRequest);

private:
    UpdateProgram(pid_t process, FileDescriptor input, FileDescriptor end);
    void reap();

    pid_t m_process;
    FileDescriptor m_input;
    FileDescriptor m_end; // a process descriptor
    bool m_hasClosedInput = false;
};
