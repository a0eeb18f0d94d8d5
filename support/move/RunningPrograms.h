#pragma once

#include <QList>
#include <QString>

/// A program that runs, as far as this process may know.
struct RunningProgram
{
    qint64 processIdentifier;
    /// The absolute path of its executable.
    QString executable;
};

/// The programs that run now, of any user. A program whose executable may not be asked for, as another user's, is known
/// by the path that it was started with when that is absolute, and left out otherwise.
[[nodiscard]] QList<RunningProgram> runningPrograms(const QString& processFolder = QStringLiteral("/proc"));
