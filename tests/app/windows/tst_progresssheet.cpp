#include "app/windows/ProgressIndicator.h"
#include "app/windows/ProgressSheet.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto lateEnough = 20ms;

/// A window on the screen, and its sheet: `auto [window, sheet] = SheetOfWindow();`
struct SheetOfWindow
{
    template <typename... Patience>
    explicit SheetOfWindow(Patience... patience)
        : sheet(&window, patience...)
    {
        window.show();
    }

    QWidget window;
    ProgressSheet sheet;
};

} // namespace

class tst_ProgressSheet : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void itIsAWindowModalSheetWithTheMessage()
    {
        auto [window, sheet] = SheetOfWindow();
        sheet.begin(u"Lecture de la carte vitale en cours…"_s);
        QVERIFY(sheet.isVisible());
        QCOMPARE(sheet.windowModality(), Qt::WindowModal);
        QCOMPARE(sheet.informationsTextField()->text(), u"Lecture de la carte vitale en cours…"_s);
        QVERIFY(!(sheet.windowFlags() & Qt::WindowCloseButtonHint));
    }

    void beforeTheCancelButtonIsShownEscapeAndClosingAreIgnored()
    {
        auto [window, sheet] = SheetOfWindow();
        const QSignalSpy finished(&sheet, &QDialog::finished);
        const QSignalSpy cancelled(&sheet, &ProgressSheet::cancelRequested);
        sheet.begin(u"Lecture"_s);
        QVERIFY(!sheet.cancelButton()->isVisible());
        QTest::keyClick(&sheet, Qt::Key_Escape);
        QVERIFY(sheet.isVisible());
        sheet.close();
        QVERIFY(sheet.isVisible());
        QCOMPARE(finished.count(), 0);
        QCOMPARE(cancelled.count(), 0);
    }

    void afterADelayItOffersToCancelAndStaysOpenUntilItIsEnded()
    {
        auto [window, sheet] = SheetOfWindow(lateEnough);
        const QSignalSpy cancelled(&sheet, &ProgressSheet::cancelRequested);
        sheet.begin(u"Lecture"_s);
        QVERIFY(QTest::qWaitForWindowActive(&sheet));
        QTRY_VERIFY(sheet.cancelButton()->isVisible());
        QCOMPARE(sheet.cancelButton()->text(), u"Annuler"_s);
        QTRY_VERIFY(sheet.contentsRect().contains(sheet.cancelButton()->geometry()));

        QTest::mouseClick(sheet.cancelButton(), Qt::LeftButton);
        QCOMPARE(cancelled.count(), 1);
        QTest::keyClick(&sheet, Qt::Key_Escape);
        QCOMPARE(cancelled.count(), 2);
        sheet.close();
        QCOMPARE(cancelled.count(), 3);
        QVERIFY(sheet.isVisible());

        sheet.end();
        QVERIFY(!sheet.isVisible());
        QTest::keyClick(&sheet, Qt::Key_Escape);
        QCOMPARE(cancelled.count(), 3);
    }

    void theCancelButtonHasTheFocusAndADescription()
    {
        auto [window, sheet] = SheetOfWindow(lateEnough);
        const QSignalSpy cancelled(&sheet, &ProgressSheet::cancelRequested);
        sheet.begin(u"Lecture"_s);
        QVERIFY(QTest::qWaitForWindowActive(&sheet));
        QTRY_VERIFY(sheet.cancelButton()->hasFocus());
        const QAccessibleInterface* button = QAccessible::queryAccessibleInterface(sheet.cancelButton());
        QCOMPARE(button->text(QAccessible::Name), u"Annuler"_s);
        QCOMPARE(button->text(QAccessible::Description), sheet.patienceLabel()->text());
        // The button appears while the user may be typing, so Enter does not press it.
        QTest::keyClick(sheet.cancelButton(), Qt::Key_Return);
        QCOMPARE(cancelled.count(), 0);
        QTest::keyClick(sheet.cancelButton(), Qt::Key_Space);
        QCOMPARE(cancelled.count(), 1);
    }

    void eachReadStartsWithoutTheCancelButton()
    {
        auto [window, sheet] = SheetOfWindow(lateEnough);
        sheet.begin(u"Lecture"_s);
        QTRY_VERIFY(sheet.cancelButton()->isVisible());
        sheet.end();
        const QSignalSpy cancelled(&sheet, &ProgressSheet::cancelRequested);
        sheet.begin(u"Lecture"_s);
        QVERIFY(!sheet.cancelButton()->isVisible());
        QTest::keyClick(&sheet, Qt::Key_Escape);
        QCOMPARE(cancelled.count(), 0);
    }

    void itFinishesWithCodeOneAndCanBeOpenedAgain()
    {
        auto [window, sheet] = SheetOfWindow();
        const QSignalSpy finished(&sheet, &QDialog::finished);
        sheet.end();
        QCOMPARE(finished.count(), 0);
        for (int round = 1; round <= 2; ++round) {
            sheet.begin(u"Lecture"_s);
            sheet.end();
            QVERIFY(!sheet.isVisible());
            QCOMPARE(finished.count(), round);
            QCOMPARE(finished.last().first().toInt(), 1);
        }
    }

    void theProgressBarMovesWhileTheSheetIsOpen()
    {
        auto [window, sheet] = SheetOfWindow();
        QVERIFY(!sheet.progressIndicator()->isAnimating());
        sheet.begin(u"Lecture"_s);
        QVERIFY(QTest::qWaitForWindowExposed(&sheet));
        QVERIFY(sheet.progressIndicator()->isAnimating());
        const QImage first = sheet.progressIndicator()->grab().toImage();
        QTRY_VERIFY(sheet.progressIndicator()->grab().toImage() != first);
        sheet.end();
        QVERIFY(!sheet.progressIndicator()->isAnimating());
    }

    void itAsksForPatienceOnlyAfterADelay()
    {
        QCOMPARE(ProgressSheet::usualPatience, 5s);
        auto [window, sheet] = SheetOfWindow(lateEnough);
        sheet.begin(u"Lecture"_s);
        QVERIFY(!sheet.patienceLabel()->isVisible());
        const int width = sheet.width();
        QTRY_VERIFY(sheet.patienceLabel()->isVisible());
        QTRY_VERIFY(sheet.height() > sheet.patienceLabel()->geometry().bottom());
        QCOMPARE(sheet.width(), width);
        QVERIFY(sheet.patienceLabel()->text().startsWith(u"Le lecteur tarde à répondre…"_s));
        QCOMPARE(sheet.informationsTextField()->text(), u"Lecture"_s);
        sheet.end();
        sheet.begin(u"Lecture"_s);
        QVERIFY(!sheet.patienceLabel()->isVisible());
    }

    void aNewMessageReplacesTheShownOne()
    {
        auto [window, sheet] = SheetOfWindow();
        sheet.begin(u"Lecture"_s);
        sheet.begin(u"Autre"_s);
        QCOMPARE(sheet.informationsTextField()->text(), u"Autre"_s);
        sheet.end();
        QVERIFY(!sheet.isVisible());
    }

    void assistiveTechnologyFindsAProgressBar()
    {
        auto [window, sheet] = SheetOfWindow();
        QAccessibleInterface* ring = QAccessible::queryAccessibleInterface(sheet.progressIndicator());
        QCOMPARE(ring->role(), QAccessible::ProgressBar);
        QVERIFY(!ring->text(QAccessible::Name).isEmpty());
    }
};

template class RunnableTests<tst_ProgressSheet, QApplication>;
#include "tst_progresssheet.moc"
