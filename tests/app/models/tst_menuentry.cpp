#include "app/models/MenuEntry.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_MenuEntry : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aTitleIsShownUnchanged_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("actionText");
        QTest::newRow("plain") << u"SPECIMEN Zoé.pdf"_s << u"SPECIMEN Zoé.pdf"_s;
        QTest::newRow("ampersands") << u"A & B && C.pdf"_s << u"A && B &&&& C.pdf"_s;
        QTest::newRow("a tab") << u"A\tCtrl+Q"_s << u"A Ctrl+Q"_s;
    }

    void aTitleIsShownUnchanged()
    {
        QFETCH(const QString, title);
        QTEST(MenuEntry{.title = title}.actionText(), "actionText");
    }

    void aSeparatorHasAnEmptyTitle()
    {
        const MenuEntry separator = MenuEntry::separator();
        QVERIFY(separator.isSeparator);
        QVERIFY(separator.title.isEmpty());
    }
};

template class RunnableTests<tst_MenuEntry, void>;
#include "tst_menuentry.moc"
