#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/support/move/KilledAtCall.h"

#include <QCoreApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int size = 100'000;

QStringList writing(const QString& path, char character, bool named)
{
    QStringList command{QStringLiteral(PELMORA_PRIVATE_FILE_WRITER), path, QString::number(size),
                        QString(QLatin1Char(character))};
    if (named)
        command.append(u"named"_s);
    return command;
}

// The named system calls of the command, one a line.
QStringList callsOf(const QString& names, const QStringList& command)
{
    const QTemporaryDir folder;
    const QString calls = folder.filePath(u"calls"_s);
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"ASAN_OPTIONS"_s, u"detect_leaks=0"_s);
    process.setProcessEnvironment(environment);
    process.start(u"strace"_s, QStringList{u"-f"_s, u"-o"_s, calls, u"-e"_s, u"trace="_s + names} + command);
    process.waitForFinished();
    return QString::fromUtf8(contentOf(calls)).split(u'\n', Qt::SkipEmptyParts);
}

} // namespace

// Kills a writer at each of its system calls.
class tst_PrivateFileInterrupted : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void afterAKillTheFileIsCompleteAndTheNextWriterCleansUp_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<bool>("named");
        for (const char* call : {"fstat,newfstatat", "flock", "getdents64", "write", "fdatasync", "linkat"})
            QTest::addRow("unnamed, %s", call) << QString::fromLatin1(call) << false;
        for (const char* call : {"openat", "flock", "getdents64", "write", "fdatasync", "renameat", "close"})
            QTest::addRow("named, %s", call) << QString::fromLatin1(call) << true;
    }

    void afterAKillTheFileIsCompleteAndTheNextWriterCleansUp()
    {
        QFETCH(const QString, call);
        QFETCH(const bool, named);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"file"_s);
        const QByteArray old(size, 'o');
        const QByteArray newer(size, 'n');
        QCOMPARE(QProcess::execute(writing(path, 'o', named).first(), writing(path, 'o', named).sliced(1)), 0);
        int count = 0;
        while (isKilledAt(call, count + 1, writing(path, 'n', named))) {
            ++count;
            const QByteArray content = contentOf(path);
            QVERIFY(content == old || content == newer);
            QVERIFY(count < 300);
        }
        QVERIFY(count > 0);
        // The last run was not killed.
        QCOMPARE(contentOf(path), newer);
        QCOMPARE(namesIn(folder.path()), QStringList{u"file"_s});
    }

    void aKilledWriterLeavesAFileOnlyWithoutUnnamedFiles()
    {
        for (const bool named : {false, true}) {
            const QTemporaryDir folder;
            QVERIFY(isKilledAt(u"fdatasync"_s, 1, writing(folder.filePath(u"file"_s), 'n', named)));
            QCOMPARE(namesIn(folder.path()).size(), named ? 1 : 0);
        }
    }

    void theContentIsFlushedBeforeTheFileIsRenamed_data()
    {
        QTest::addColumn<bool>("named");
        QTest::addColumn<QString>("order");
        QTest::newRow("unnamed") << false << u"write fdatasync linkat renameat"_s;
        QTest::newRow("named") << true << u"write fdatasync renameat"_s;
    }

    void theContentIsFlushedBeforeTheFileIsRenamed()
    {
        QFETCH(const bool, named);
        QFETCH(const QString, order);
        const QTemporaryDir folder;
        QStringList done;
        static const QRegularExpression call(u"^\\d+ +(\\w+)\\(.* = (\\d+)$"_s);
        for (const QString& line :
             callsOf(u"write,fdatasync,linkat,renameat"_s, writing(folder.filePath(u"file"_s), 'n', named))) {
            const QRegularExpressionMatch match = call.match(line);
            // Sanitizers also write, but less at once.
            if (match.captured(1) != u"write"_s || match.captured(2).toInt() == size)
                done.append(match.captured(1));
        }
        done.removeAll(QString()); // the end of the process
        QCOMPARE(done.join(u' '), order);
    }
};

template class RunnableTests<tst_PrivateFileInterrupted, QCoreApplication>;
#include "tst_privatefileinterrupted.moc"
