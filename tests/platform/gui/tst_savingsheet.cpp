#include "platform/gui/SavingSheet.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QLabel>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class tst_SavingSheet : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<QWidget> m_window;

    static QString messageOf(const SavingSheet& sheet) { return sheet.findChild<QLabel*>()->text(); }

private Q_SLOTS:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_window->resize(400, 300);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void aLongWriteShowsASheetOverTheWindow()
    {
        SavingSheet sheet(m_window.get(), 1ms);
        sheet.begin();
        QVERIFY(!sheet.isVisible());
        QTRY_VERIFY(sheet.isVisible());
        QCOMPARE(messageOf(sheet), u"Enregistrement en cours…"_s);
        QCOMPARE(sheet.windowModality(), Qt::WindowModal);
        sheet.end();
        QVERIFY(!sheet.isVisible());
    }

    void aShortWriteShowsNoSheet()
    {
        SavingSheet sheet(m_window.get(), 50ms);
        SavingSheet other(m_window.get(), 50ms);
        sheet.begin();
        sheet.end();
        // The other sheet begins later, so it appears later.
        other.begin();
        QTRY_VERIFY(other.isVisible());
        QVERIFY(!sheet.isVisible());
    }

    void theDefaultDelayIsThreeTenthsOfASecond() { QCOMPARE(SavingSheet::usualPatience, 300ms); }

    void neitherEscapeNorItsCloseButtonEndsTheWrite()
    {
        SavingSheet sheet(m_window.get(), 1ms);
        sheet.begin();
        QTRY_VERIFY(sheet.isVisible());
        QTest::keyClick(&sheet, Qt::Key_Escape);
        sheet.close();
        QVERIFY(sheet.isVisible());
    }

    void aHiddenWindowIsShownWithTheSheet()
    {
        m_window->hide();
        SavingSheet sheet(m_window.get(), 1ms);
        sheet.begin();
        QTRY_VERIFY(sheet.isVisible());
        QVERIFY(m_window->isVisible());
    }

    void quittingShowsTheSheetAtOnce()
    {
        SavingSheet sheet(m_window.get(), 1h);
        sheet.begin();
        sheet.announceLeaving();
        QVERIFY(sheet.isVisible());
        QCOMPARE(messageOf(sheet), u"Enregistrement en cours… Pelmora se fermera ensuite."_s);
        sheet.end();
        // The next write has the usual message.
        sheet.begin();
        QCOMPARE(messageOf(sheet), u"Enregistrement en cours…"_s);
    }
};

template class RunnableTests<tst_SavingSheet, QApplication>;
#include "tst_savingsheet.moc"
