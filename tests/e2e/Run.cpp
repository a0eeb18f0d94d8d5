#include "tests/e2e/Run.h"

#include <QProcess>
#include <QProcessEnvironment>

using namespace Qt::StringLiterals;

namespace {

QStringList linesOf(const QByteArray& bytes)
{
    QStringList lines = QString::fromUtf8(bytes).split(u'\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

} // namespace

QStringList RunResult::outputLines() const
{
    return linesOf(output);
}

QStringList RunResult::errorLines() const
{
    return linesOf(errors);
}

RunResult run(const QString& home, const QString& program, const QStringList& arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& name : {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"QT_QPA_PLATFORM"_s, u"XDG_CONFIG_DIRS"_s})
        environment.remove(name);
    environment.insert(u"HOME"_s, home);
    environment.insert(u"XDG_CONFIG_HOME"_s, home + "/config"_L1);
    environment.insert(u"XDG_CACHE_HOME"_s, home + "/cache"_L1);
    environment.insert(u"XDG_RUNTIME_DIR"_s, home + "/runtime"_L1);
    environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);

    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    RunResult result;
    if (process.waitForFinished(60'000) && process.exitStatus() == QProcess::NormalExit)
        result.exitCode = process.exitCode();
    process.kill();
    process.waitForFinished();
    result.output = process.readAllStandardOutput();
    result.errors = process.readAllStandardError();
    return result;
}

RunResult runPelmora(const QString& home, const QStringList& arguments, const QStringList& wrapper)
{
    const QStringList command = wrapper + QStringList{u"" PELMORA_STAGE "/bin/pelmora"_s} + arguments;
    return run(home, command.first(), command.sliced(1));
}
