#include "tests/app/windows/Contrast.h"
#include "tests/app/windows/MainWindowTest.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TextSize.h"

#include <QApplication>
#include <QTemporaryDir>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize smallScreen(1366, 768);
constexpr QSize windowFrame(16, 48);

} // namespace

class tst_MainWindowLooks final : public MainWindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void everyTextHasEnoughContrast_data() { addDesktops(); }

    void everyTextHasEnoughContrast()
    {
        QFETCH(const QPalette, desktop);
        QApplication::setPalette(desktop);
        QVERIFY(QTest::qWaitForWindowExposed(&shown()));
        for (const ExpectedTile& expected : expectedTiles)
            QVERIFY2(drawnContrast(shot(*m_window, (*m_window.*expected.outlet)())) >= 4.5, expected.name);
        for (const QLabel* label : m_window->vitaleInfoView()->findChildren<QLabel*>())
            QVERIFY2(drawnContrast(shot(*m_window, label)) >= 4.5, qPrintable(label->objectName()));
    }

    void thePanelIsGreenAndSaysThatThereIsNoCard()
    {
        QCOMPARE(m_window->vitaleInfoTextField()->text(), u"Aucune"_s);
        QCOMPARE(m_window->vitaleInfoTextField()->objectName(), u"vitaleInfoTextField"_s);
        QCOMPARE(m_window->vitaleInfoView()->backgroundColor(), QColor(0, 162, 1));
        const QImage panel = shot(*m_window, m_window->vitaleInfoView());
        QCOMPARE(panel.pixelColor(0, 0), QColor(0, 162, 1));
        QCOMPARE(panel.pixelColor(panel.width() - 1, panel.height() - 1), QColor(0, 162, 1));
    }

    void noTextIsCut_data()
    {
        QTest::addColumn<double>("textSize");
        QTest::newRow("plain") << 1.0;
        QTest::newRow("200 %") << 2.0;
    }

    void noTextIsCut()
    {
        QFETCH(const double, textSize);
        const ScaledText text(textSize);
        QVERIFY(QTest::qWaitForWindowExposed(&shown()));
        m_window->resize(m_window->minimumSizeHint());
        QCOMPARE(cutTexts(*m_window).join(u' '), QString());
        const QSize room = smallScreen - windowFrame;
        QVERIFY(m_window->minimumSizeHint().boundedTo(room) == m_window->minimumSizeHint());
    }

    void theWindowFitsASmallScreenAtTwiceTheScale()
    {
        const QSize room = smallScreen / 2 - windowFrame / 2;
        QCOMPARE(m_window->minimumSizeHint().boundedTo(room), m_window->minimumSizeHint());
    }

    void theWindowOpensInsideTheScreen()
    {
        QVERIFY(m_window->width() <= m_window->screen()->availableSize().width());
        QVERIFY(m_window->height() <= m_window->screen()->availableSize().height());
    }

    void allColumnsHaveTheSameWidth()
    {
        QVERIFY(std::abs(m_window->viewButton()->width() - m_window->printButton()->width()) <= 1);
        QVERIFY(std::abs(m_window->saveButton()->width() - m_window->printButton()->width()) <= 1);
    }

    void withoutItsIconsTheWindowStillWorks()
    {
        const QTemporaryDir empty;
        MainWindow window{Bundle(empty.path())};
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(hasInk(shot(window, window.readButton()), window.readButton()->rect()));
    }

    void aWindowThatAppearsAtOnceLooksLikeOneThatIsShown()
    {
        MainWindow window(m_bundle, MainWindow::Appearance::AtOnce);
        QVERIFY(window.isVisible());
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(QTest::qWaitForWindowExposed(&shown()));
        QCOMPARE(window.size(), m_window->size());
        QCOMPARE(window.grab().toImage(), m_window->grab().toImage());
    }

    // It must have its size before the window manager gives it a place.
    void aWindowWithLargeTextDoesNotAppearBeforeItsSizeIsKnown()
    {
        QFont font = m_font;
        font.setPixelSize(19);
        QApplication::setFont(font);
        QVERIFY(!MainWindow(m_bundle, MainWindow::Appearance::AtOnce).isVisible());
        font.setPointSizeF(19.0 * 72 / m_window->logicalDpiY());
        QApplication::setFont(font);
        QVERIFY(!MainWindow(m_bundle, MainWindow::Appearance::AtOnce).isVisible());
    }

    void theUsualSizeHoldsTheContentWithTheLargestUsualText()
    {
        QFont font = m_font;
        font.setPixelSize(18);
        QApplication::setFont(font);
        const MainWindow window(m_bundle, MainWindow::Appearance::AtOnce);
        QVERIFY(window.isVisible());
        QCOMPARE(window.minimumSizeHint().boundedTo(m_window->size()), window.minimumSizeHint());
    }

    void theWindowHasItsIcon() { QTRY_VERIFY(!m_window->windowIcon().isNull()); }
};

template class RunnableTests<tst_MainWindowLooks, QApplication>;
#include "tst_mainwindowlooks.moc"
