#include "support/move/Administrator.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// Replaces the program that asks for the password. It is first in the path during the object's life.
class FakeAsking
{
public:
    explicit FakeAsking(const QByteArray& script);
    ~FakeAsking() { qputenv("PATH", m_pathBefore); }
    Q_DISABLE_COPY_MOVE(FakeAsking)

    [[nodiscard]] QByteArray record() const;

private:
    QTemporaryDir m_folder;
    QByteArray m_pathBefore = qgetenv("PATH");
};

FakeAsking::FakeAsking(const QByteArray& script)
{
    QFile program(m_folder.path() + "/pkexec"_L1);
    if (program.open(QIODevice::WriteOnly)) {
        program.write("#!/bin/sh\nprintf '%s\\n' \"$*\" >>'" + m_folder.path().toUtf8() + "/record'\n" + script);
        program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    qputenv("PATH", m_folder.path().toUtf8() + ':' + m_pathBefore);
}

QByteArray FakeAsking::record() const
{
    QFile file(m_folder.path() + "/record"_L1);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The program's script for a user who gives the password.
constexpr const char* granted = "exec \"$@\"\n";

} // namespace

class tst_Administrator : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void withoutTheProgramTheRequestFails()
    {
        const QByteArray before = qgetenv("PATH");
        qputenv("PATH", "/nulle/part");
        const bool canBeAsked = Administrator::canBeAsked();
        Administrator administrator;
        const Administrator::Answer answer = administrator.request();
        qputenv("PATH", before);
        QVERIFY(!canBeAsked);
        QCOMPARE(answer, Administrator::Answer::Refused);
    }

    void theUserIsAskedOnceForAllCommands()
    {
        const FakeAsking asking(granted);
        QVERIFY(Administrator::canBeAsked());
        Administrator administrator;
        QCOMPARE(administrator.request(), Administrator::Answer::Granted);
        QCOMPARE(administrator.run({u"true"_s}), std::optional(0));
        QCOMPARE(administrator.run({u"false"_s}), std::optional(1));
        QCOMPARE(asking.record(), "/bin/sh -s\n");
    }

    void argumentsArriveUnchanged()
    {
        const FakeAsking asking(granted);
        const QTemporaryDir folder;
        const QString name = folder.path() + u"/-l'été d\"Anne\" `id` $HOME \\ \n é"_s;
        Administrator administrator;
        QCOMPARE(administrator.request(), Administrator::Answer::Granted);
        QCOMPARE(administrator.run({u"mkdir"_s, u"--"_s, name}), std::optional(0));
        QVERIFY(QFile::exists(name));
    }

    void theExitStatusIsThatOfTheCommand_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<std::optional<int>>("status");
        QTest::newRow("success") << u"exit 0"_s << std::optional(0);
        QTest::newRow("failure") << u"exit 3"_s << std::optional(3);
        QTest::newRow("missing") << u"exec /nulle/part"_s << std::optional(127);
        QTest::newRow("killed") << u"kill -KILL $$"_s << std::optional<int>();
    }

    void theExitStatusIsThatOfTheCommand()
    {
        QFETCH(const QString, script);
        QFETCH(const std::optional<int>, status);
        const FakeAsking asking(granted);
        Administrator administrator;
        QCOMPARE(administrator.request(), Administrator::Answer::Granted);
        QCOMPARE(administrator.run({u"/bin/sh"_s, u"-c"_s, script}), status);
        // The next command has its own status.
        QCOMPARE(administrator.run({u"true"_s}), std::optional(0));
    }

    void theOutputOfACommandIsNotTakenForItsStatus()
    {
        const FakeAsking asking(granted);
        Administrator administrator;
        QCOMPARE(administrator.request(), Administrator::Answer::Granted);
        QCOMPARE(administrator.run({u"echo"_s, u"7"_s}), std::optional(0));
    }

    void theInputOfACommandIsEmpty()
    {
        const FakeAsking asking(granted);
        Administrator administrator;
        QCOMPARE(administrator.request(), Administrator::Answer::Granted);
        QCOMPARE(administrator.run({u"cat"_s}), std::optional(0));
    }

    void aClosedDialogCancels()
    {
        const FakeAsking asking("exit 126\n");
        Administrator administrator;
        QCOMPARE(administrator.request(), Administrator::Answer::Cancelled);
    }

    void anyOtherEndOfTheDialogIsARefusal_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::newRow("not allowed") << QByteArray("exit 127\n");
        QTest::newRow("success without a shell") << QByteArray("exit 0\n");
        QTest::newRow("killed") << QByteArray("kill -KILL $$\n");
        QTest::newRow("another answer") << QByteArray("echo non; exit 1\n");
    }

    void anyOtherEndOfTheDialogIsARefusal()
    {
        QFETCH(const QByteArray, script);
        const FakeAsking asking(script);
        Administrator administrator;
        QCOMPARE(administrator.request(), Administrator::Answer::Refused);
    }

    void aShellThatExitsMakesCommandsFail()
    {
        const FakeAsking asking("read line; echo ready; read line; exit 0\n");
        Administrator administrator;
        QCOMPARE(administrator.request(), Administrator::Answer::Granted);
        QCOMPARE(administrator.run({u"true"_s}), std::optional<int>());
    }

    void otherProcessesCannotWriteToTheShell()
    {
        const FakeAsking asking(granted);
        const QTemporaryDir folder;
        Administrator administrator;
        QCOMPARE(administrator.request(), Administrator::Answer::Granted);
        // Another process of the same user writes commands to all open descriptors of this one. It may not be
        // able to open some of them.
        const QString intrusion =
            u"for d in /proc/%1/fd/*; do (echo touch %2/intrusion >$d) 2>/dev/null; done; exit 0"_s.arg(
                QString::number(QCoreApplication::applicationPid()), folder.path());
        QCOMPARE(QProcess::execute(u"/bin/sh"_s, {u"-c"_s, intrusion}), 0);
        QCOMPARE(administrator.run({u"true"_s}), std::optional(0));
        QVERIFY(!QFile::exists(folder.path() + "/intrusion"_L1));
    }
};

template class RunnableTests<tst_Administrator, QCoreApplication>;
#include "tst_administrator.moc"
