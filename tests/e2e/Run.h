#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The exit code and the output of a program.
struct RunResult
{
    int exitCode = -1; ///< -1 when it crashed or had to be killed
    QByteArray output;
    QByteArray errors;

    /// The lines of the standard output, and of the standard error.
    [[nodiscard]] QStringList outputLines() const;
    [[nodiscard]] QStringList errorLines() const;
};

/// Runs a program to its end, without a display and with its home in the given folder.
[[nodiscard]] RunResult run(const QString& home, const QString& program, const QStringList& arguments);

/// Runs the build's pelmora in the same way. A wrapper is a command that starts the command after it.
[[nodiscard]] RunResult runPelmora(const QString& home, const QStringList& arguments, const QStringList& wrapper = {});
