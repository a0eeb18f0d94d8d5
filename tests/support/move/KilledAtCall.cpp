#include "tests/support/move/KilledAtCall.h"

#include <QProcess>

using namespace Qt::StringLiterals;

bool isKilledAt(const QString& call, int n, const QStringList& command)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // The leak sanitizer does not work in a traced process.
    environment.insert(u"ASAN_OPTIONS"_s, u"detect_leaks=0"_s);
    process.setProcessEnvironment(environment);
    const QString fault = u"inject=%1:signal=KILL:when=%2"_s.arg(call).arg(n);
    process.start(u"strace"_s, QStringList{u"-f"_s, u"-o"_s, u"/dev/null"_s, u"-e"_s, fault} + command);
    process.waitForFinished();
    return process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0;
}
