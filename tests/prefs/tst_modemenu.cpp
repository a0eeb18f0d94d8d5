#include "prefs/ModeMenu.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <memory>

using namespace Qt::StringLiterals;

/// A window with the menu, and another control that accepts the focus.
class tst_ModeMenu final : public TestCase
{
    Q_OBJECT

private:
    std::unique_ptr<QWidget> m_window;
    ModeMenu* m_menu = nullptr;
    QLineEdit* m_other = nullptr;
    std::unique_ptr<QSignalSpy> m_browsed;
    std::unique_ptr<QSignalSpy> m_chosen;

    void press(std::initializer_list<Qt::Key> keys) const
    {
        for (const Qt::Key key : keys)
            QTest::keyClick(m_menu, key);
    }

    /// Waits until a timer with the menu's delay, started now, has expired.
    void letTheRestPass() const
    {
        QTimer timer;
        timer.setSingleShot(true);
        const QSignalSpy passed(&timer, &QTimer::timeout);
        timer.start(ModeMenu::keyRest + ModeMenu::keyRest / 10);
        QTRY_COMPARE(passed.count(), 1);
    }

    bool openList() const
    {
        QTest::keyClick(m_menu, Qt::Key_Space);
        return QTest::qWaitForWindowExposed(m_menu->view()->window());
    }

private Q_SLOTS:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        auto* layout = new QVBoxLayout(m_window.get());
        m_menu = new ModeMenu;
        m_other = new QLineEdit;
        layout->addWidget(m_menu);
        layout->addWidget(m_other);
        m_menu->addItems({u"Automatique"_s, u"Installée"_s, u"Embarquée"_s});
        m_browsed = std::make_unique<QSignalSpy>(m_menu, &ModeMenu::browsed);
        m_chosen = std::make_unique<QSignalSpy>(m_menu, &ModeMenu::chosen);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_menu->setFocus();
    }

    void aChoiceByKeysIsAppliedAfterTheDelay()
    {
        QElapsedTimer clock;
        clock.start();
        press({Qt::Key_Down, Qt::Key_Down});
        QCOMPARE(m_menu->currentIndex(), 2);
        QCOMPARE(m_browsed->count(), 2);
        QCOMPARE(m_chosen->count(), 0);
        QTRY_COMPARE(m_chosen->count(), 1);
        QVERIFY2(clock.elapsed() >= ModeMenu::keyRest.count() * 9 / 10, qPrintable(QString::number(clock.elapsed())));
    }

    void screenReadersGetTheEntryWhileTheListIsClosed()
    {
        press({Qt::Key_Down});
        QCOMPARE(m_menu->accessibleDescription(), m_menu->itemText(1));
        const auto selected = [this] { return m_menu->view()->selectionModel()->selectedIndexes().value(0).row(); };
        QCOMPARE(selected(), 1);
        m_other->setFocus();
        m_menu->setCurrentIndex(2);
        QCOMPARE(selected(), 1);
    }

    void eachKeyRestartsTheDelay()
    {
        press({Qt::Key_Down});
        QElapsedTimer clock;
        QTimer::singleShot(ModeMenu::keyRest / 2, m_menu, [&] {
            clock.start();
            press({Qt::Key_Down});
        });
        QTRY_COMPARE(m_chosen->count(), 1);
        QVERIFY(clock.isValid());
        QVERIFY2(clock.elapsed() >= ModeMenu::keyRest.count() * 9 / 10, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(m_menu->currentIndex(), 2);
    }

    void aLetterChoosesAfterTheDelayLikeOtherKeys()
    {
        QTest::keyClick(m_menu, Qt::Key_E, Qt::NoModifier);
        QCOMPARE(m_menu->currentIndex(), 2);
        QCOMPARE(m_browsed->count(), 1);
        QCOMPARE(m_chosen->count(), 0);
        QTRY_COMPARE(m_chosen->count(), 1);
    }

    void enterOrTheLossOfFocusAppliesAChoiceAtOnce_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::newRow("Enter") << Qt::Key_Return;
        QTest::newRow("Enter of the digits") << Qt::Key_Enter;
        QTest::newRow("Tab") << Qt::Key_Tab;
    }
    void enterOrTheLossOfFocusAppliesAChoiceAtOnce()
    {
        QFETCH(const Qt::Key, key);
        press({Qt::Key_Down, Qt::Key_Down});
        press({key});
        QCOMPARE(m_chosen->count(), 1);
        QCOMPARE(m_menu->currentIndex(), 2);
        // The loss of focus or the end of the delay does not apply the choice again.
        m_other->setFocus();
        letTheRestPass();
        QCOMPARE(m_chosen->count(), 1);
    }

    void aChoiceInAHiddenMenuIsAppliedAtOnce()
    {
        press({Qt::Key_Down});
        m_menu->hide();
        QCOMPARE(m_chosen->count(), 1);
    }

    void enterWithoutAChangeChoosesNothing()
    {
        press({Qt::Key_Return});
        m_other->setFocus();
        QCOMPARE(m_chosen->count(), 0);
        QCOMPARE(m_browsed->count(), 0);
    }

    void keysThatReturnToTheSameEntryChooseNothing()
    {
        press({Qt::Key_Down, Qt::Key_Up});
        QCOMPARE(m_browsed->count(), 2);
        press({Qt::Key_Return});
        QCOMPARE(m_chosen->count(), 0);
        QCOMPARE(m_menu->currentIndex(), 0);
    }

    void theWheelOverTheClosedMenuIsPassedToThePane()
    {
        m_menu->setCurrentIndex(1);
        for (const int turn : {120, -120}) {
            QWheelEvent event(QPointF(5, 5), m_menu->mapToGlobal(QPointF(5, 5)), {}, {0, turn}, Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            event.accept();
            QCoreApplication::sendEvent(m_menu, &event);
            QVERIFY(!event.isAccepted());
        }
        QCOMPARE(m_menu->currentIndex(), 1);
        QCOMPARE(m_browsed->count(), 0);
        QCOMPARE(m_chosen->count(), 0);
    }

    void aChoiceInTheListIsAppliedAtOnceAndOnce()
    {
        press({Qt::Key_Down});
        QVERIFY(openList());
        QAbstractItemView* list = m_menu->view();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(list->model()->index(2, 0)).center());
        QTRY_COMPARE(m_chosen->count(), 1);
        QCOMPARE(m_menu->currentIndex(), 2);
        m_other->setFocus();
        QCOMPARE(m_chosen->count(), 1);
    }

    void choosingTheSameEntryAgainIsAChoice()
    {
        QVERIFY(openList());
        QTest::keyClick(m_menu->view(), Qt::Key_Return);
        QTRY_COMPARE(m_chosen->count(), 1);
        QCOMPARE(m_menu->currentIndex(), 0);
    }

    void aChoiceByKeysIsNotAppliedWhileTheListIsOpenButAfterwards()
    {
        press({Qt::Key_Down});
        QVERIFY(openList());
        letTheRestPass();
        QCOMPARE(m_chosen->count(), 0);
        QTest::keyClick(m_menu->view(), Qt::Key_Escape);
        QTRY_COMPARE(m_chosen->count(), 1);
        QCOMPARE(m_menu->currentIndex(), 1);
    }

    void anEntrySetByTheProgramIsNotAChoice()
    {
        m_menu->setCurrentIndex(2);
        m_other->setFocus();
        QCOMPARE(m_chosen->count(), 0);
        // The next keys start from that entry.
        m_menu->setFocus();
        press({Qt::Key_Up, Qt::Key_Down, Qt::Key_Return});
        QCOMPARE(m_chosen->count(), 0);
    }
};

template class RunnableTests<tst_ModeMenu, QApplication>;
#include "tst_modemenu.moc"
