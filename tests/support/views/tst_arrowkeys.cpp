#include "support/views/ArrowKeys.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QGridLayout>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

// Three rows of buttons, like the main window's. The first row has only one button.
class tst_ArrowKeys : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        auto* grid = new QGridLayout(m_window.get());
        QList<QWidget*> buttons;
        for (const QString& name : {u"a"_s, u"d"_s, u"e"_s, u"f"_s, u"g"_s, u"h"_s, u"i"_s}) {
            auto* button = new QPushButton(name, m_window.get());
            button->setObjectName(name);
            button->setFixedSize(100, 60);
            const auto place = int(buttons.isEmpty() ? 0 : buttons.size() + 2);
            grid->addWidget(button, place / 3, place % 3);
            buttons.append(button);
        }
        m_keys = std::make_unique<ArrowKeys>(buttons);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }
    void cleanup()
    {
        m_keys.reset();
        m_window.reset();
    }

    void theFocusGoesToTheNearestInTheKeysDirection_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<QString>("to");
        QTest::newRow("right") << u"d"_s << Qt::Key_Right << u"e"_s;
        QTest::newRow("left") << u"f"_s << Qt::Key_Left << u"e"_s;
        QTest::newRow("down") << u"e"_s << Qt::Key_Down << u"h"_s;
        QTest::newRow("up") << u"i"_s << Qt::Key_Up << u"f"_s;
        QTest::newRow("up, past an empty place") << u"e"_s << Qt::Key_Up << u"a"_s;
        QTest::newRow("up, past two empty places") << u"f"_s << Qt::Key_Up << u"a"_s;
        QTest::newRow("stays alone in its row") << u"a"_s << Qt::Key_Right << u"a"_s;
        QTest::newRow("down from the first row") << u"a"_s << Qt::Key_Down << u"d"_s;
        QTest::newRow("stays at the right edge") << u"f"_s << Qt::Key_Right << u"f"_s;
        QTest::newRow("stays at the bottom") << u"g"_s << Qt::Key_Down << u"g"_s;
    }
    void theFocusGoesToTheNearestInTheKeysDirection()
    {
        QFETCH(const QString, from);
        QFETCH(const Qt::Key, key);
        QFETCH(const QString, to);
        press(from, key);
        QCOMPARE(focus(), to);
    }

    void aDisabledOneIsPassedOver()
    {
        button(u"e"_s).setEnabled(false);
        press(u"d"_s, Qt::Key_Right);
        QCOMPARE(focus(), u"f"_s);
    }

    void otherKeysAreTheButtonsOwn()
    {
        const QSignalSpy clicks(&button(u"d"_s), &QPushButton::clicked);
        press(u"d"_s, Qt::Key_Space);
        QCOMPARE(clicks.size(), 1);
        QCOMPARE(focus(), u"d"_s);
    }

private:
    QPushButton& button(const QString& name) { return *m_window->findChild<QPushButton*>(name); }
    void press(const QString& from, Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        button(from).setFocus();
        QTest::keyClick(&button(from), key, modifiers);
    }
    static QString focus()
    {
        return QApplication::focusWidget() ? QApplication::focusWidget()->objectName() : QString();
    }

    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<ArrowKeys> m_keys;
};

template class RunnableTests<tst_ArrowKeys, QApplication>;
#include "tst_arrowkeys.moc"
