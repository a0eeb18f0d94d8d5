#include "platform/gui/Workspace.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/platform/gui/Desktop.h"

#include <QApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_Workspace : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aFileIsOpenedUnderItsExactPath_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("encoded");
        QTest::newRow("plain") << u"/a/b.pdf"_s << QByteArray("file:///a/b.pdf");
        QTest::newRow("blanks and accents") << u"/a b/Zoé.pdf"_s << QByteArray("file:///a%20b/Zo%C3%A9.pdf");
        QTest::newRow("special characters of addresses")
            << u"/100 %/a#b?c&d.pdf"_s << QByteArray("file:///100%20%25/a%23b%3Fc&d.pdf");
        QTest::newRow("special characters of shells") << u"/a'b\"c;d$e.pdf"_s << QByteArray("file:///a'b%22c;d$e.pdf");
        QTest::newRow("already like a link") << u"/a%20b.pdf"_s << QByteArray("file:///a%2520b.pdf");
    }

    void aFileIsOpenedUnderItsExactPath()
    {
        QFETCH(const QString, path);
        const Desktop desktop;
        QVERIFY(Workspace::openFile(path));
        QCOMPARE(desktop.opened().size(), 1);
        QCOMPARE(desktop.opened().constFirst().toLocalFile(), path);
        QTEST(desktop.opened().constFirst().toEncoded(), "encoded");
    }

    void anAddressIsOpenedUnchanged()
    {
        const Desktop desktop;
        const QUrl url(u"mailto:support@morvel.example?subject=Suggestion%20pour%20le%20logiciel%20PELMORA"_s);
        QVERIFY(Workspace::openUrl(url));
        QCOMPARE(desktop.opened(), QList<QUrl>{url});
    }
};

template class RunnableTests<tst_Workspace, QApplication>;
#include "tst_workspace.moc"
