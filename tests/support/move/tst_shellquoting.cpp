#include "support/move/ShellQuoting.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_ShellQuoting : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theShellReadsAQuotedTextAsOneWord_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("quoted");
        QTest::newRow("plain") << u"/a/b"_s << u"'/a/b'"_s;
        QTest::newRow("empty") << QString() << u"''"_s;
        QTest::newRow("blanks") << u" a  b "_s << u"' a  b '"_s;
        QTest::newRow("a quote") << u"l'été"_s << u"'l'\\''été'"_s;
        QTest::newRow("quotes") << u"''"_s << u"''\\'''\\'''"_s;
        QTest::newRow("double quotes") << u"\"$HOME\" `id` \\"_s << u"'\"$HOME\" `id` \\'"_s;
        QTest::newRow("line ends") << u"a\nb\n"_s << u"'a\nb\n'"_s;
        QTest::newRow("a dash") << u"-n"_s << u"'-n'"_s;
        QTest::newRow("other letters") << u"Ελλάδα 日本 😀"_s << u"'Ελλάδα 日本 😀'"_s;
        QTest::newRow("the shell's own") << u"a;b&c|d>e*?[x]~#!(y){z}"_s << u"'a;b&c|d>e*?[x]~#!(y){z}'"_s;
    }

    void theShellReadsAQuotedTextAsOneWord()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, quoted);
        QCOMPARE(quotedForShell(text), quoted);

        QProcess shell;
        shell.start(u"/bin/sh"_s, {u"-c"_s, u"printf '%s|' "_s + quotedForShell(text)});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(QString::fromUtf8(shell.readAllStandardOutput()), text + u'|');
    }
};

template class RunnableTests<tst_ShellQuoting, QCoreApplication>;
#include "tst_shellquoting.moc"
