#include "platform/gui/WindowActivation.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QTest>
#include <QWidget>

using namespace Qt::StringLiterals;

class tst_WindowActivation : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aHiddenOrIconifiedWindowIsShown_data()
    {
        QTest::addColumn<Qt::WindowStates>("state");
        QTest::addColumn<bool>("isHidden");
        QTest::newRow("hidden") << Qt::WindowStates(Qt::WindowNoState) << true;
        QTest::newRow("iconified") << Qt::WindowStates(Qt::WindowMinimized) << false;
        QTest::newRow("iconified and hidden") << Qt::WindowStates(Qt::WindowMinimized) << true;
        QTest::newRow("maximised, iconified") << (Qt::WindowMaximized | Qt::WindowMinimized) << false;
        QTest::newRow("shown") << Qt::WindowStates(Qt::WindowNoState) << false;
    }
    void aHiddenOrIconifiedWindowIsShown()
    {
        QFETCH(const Qt::WindowStates, state);
        QFETCH(const bool, isHidden);
        QWidget window;
        QWidget other;
        window.show();
        window.setWindowState(state);
        window.setVisible(!isHidden);
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));

        bringToFront(window);
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QVERIFY(window.isVisible());
        QVERIFY(!window.isMinimized());
        QCOMPARE(window.isMaximized(), state.testFlag(Qt::WindowMaximized));
    }
};

template class RunnableTests<tst_WindowActivation, QApplication>;
#include "tst_windowactivation.moc"
