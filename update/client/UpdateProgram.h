#pragma once

#include "platform/FileDescriptor.h"

#include <QObject>
#include <QStringList>

#include <expected>
#include <memory>
#include <system_error>

#include <sys/types.h>

/// The running update program. Each byte on its standard input asks for its window; the end of the input, also when
/// this process ends, ends the program. Main thread only.
class UpdateProgram final : public QObject
{
    Q_OBJECT

public:
    /// The error of a program that could not be executed.
    [[nodiscard]] static std::expected<std::unique_ptr<UpdateProgram>, std::error_code>
    start(const QString& program, const QStringList& arguments);

    void showWindow();

Q_SIGNALS:
    /// It has ended, perhaps with a request that it has not read.
    void ended(bool hasLeftRequest);

private:
    UpdateProgram(pid_t process, FileDescriptor input, FileDescriptor end);
    void reap();

    pid_t m_process;
    FileDescriptor m_input;
    FileDescriptor m_end; // a process descriptor
    bool m_hasClosedInput = false;
};
