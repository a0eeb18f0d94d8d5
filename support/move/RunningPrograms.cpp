#include "support/move/RunningPrograms.h"

#include <QDir>

#include <filesystem>
#include <system_error>

namespace {

QString executableOf(const QString& process)
{
    std::error_code error;
    const std::filesystem::path executable =
        std::filesystem::read_symlink(QFile::encodeName(process + QStringLiteral("/exe")).toStdString(), error);
    if (!error)
        return QFile::decodeName(executable.c_str());
    QFile arguments(process + QStringLiteral("/cmdline"));
    if (!arguments.open(QIODevice::ReadOnly))
        return {};
    const QByteArray all = arguments.readAll();
    return QFile::decodeName(all.left(all.indexOf('\0')));
}

} // namespace

QList<RunningProgram> runningPrograms(const QString& processFolder)
{
    QList<RunningProgram> programs;
    const QStringList names = QDir(processFolder).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& name : names) {
        bool isNumber = false;
        const qint64 identifier = name.toLongLong(&isNumber);
        if (!isNumber)
            continue;
        const QString executable = executableOf(processFolder + u'/' + name);
        if (executable.startsWith(u'/'))
            programs.append({identifier, executable});
    }
    return programs;
}
