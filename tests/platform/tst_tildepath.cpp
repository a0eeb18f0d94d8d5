#include "platform/TildePath.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_TildePath : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void onlyALeadingTildeIsReplacedByTheHome_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("expected");
        QTest::newRow("below") << u"~/Library/Logs"_s << u"/home/léa b/Library/Logs"_s;
        QTest::newRow("alone") << u"~"_s << u"/home/léa b"_s;
        QTest::newRow("another's") << u"~paul/x"_s << u"~paul/x"_s;
        QTest::newRow("inside") << u"/a/~/b"_s << u"/a/~/b"_s;
        QTest::newRow("none") << u"/a/b"_s << u"/a/b"_s;
        QTest::newRow("empty") << u""_s << u""_s;
    }

    void onlyALeadingTildeIsReplacedByTheHome()
    {
        qputenv("HOME", "/home/léa b");
        QFETCH(const QString, path);
        QTEST(expandingTildeInPath(path), "expected");
    }
};

template class RunnableTests<tst_TildePath, void>;
#include "tst_tildepath.moc"
