#pragma once

#include <QList>
#include <QString>

struct RunningProgram
{
    qint64 processIdentifier;
    /// Absolute path.
    QString executable;
};

/// The running programs of all users. When the executable of another user's program is not readable, the first argument
/// is used if it is an absolute path, else the program is left out.
[[nodiscard]] QList<RunningProgram> runningPrograms(const QString& processFolder = QStringLiteral("/proc"));
