#include "tests/common/RunnableTests.h"
#include "tests/prefs/ControllerTest.h"

#include <QApplication>
#include <QMainWindow>

using namespace Qt::StringLiterals;

/// The toolbar in its window.
class tst_PaneToolbar final : public ControllerTest
{
    Q_OBJECT

private:
    const QStringList m_identifiers{u"a"_s, u"b"_s, u"c"_s};

    bool open()
    {
        for (const QString& identifier : m_identifiers)
            pane(identifier);
        m_controller->show();
        return QTest::qWaitForWindowActive(m_controller->window());
    }

private Q_SLOTS:
    void theToolbarHasOneButtonPerPaneInTheirOrder()
    {
        QVERIFY(open());
        QCOMPARE(m_controller->toolbar().itemIdentifiers(), m_identifiers);
        for (const auto& one : m_controller->panes()) {
            const QToolButton* made = button(one->paneIdentifier());
            QVERIFY(made);
            QCOMPARE(made->text(), one->paneName());
            QCOMPARE(made->accessibleName(), one->paneName());
            QCOMPARE(made->toolButtonStyle(), Qt::ToolButtonTextUnderIcon);
            QCOMPARE(made->icon().pixmap(8).toImage(), one->paneIcon().pixmap(8).toImage());
            QVERIFY(made->width() >= made->sizeHint().width());
        }
    }

    void onlyTheSelectedButtonIsDown()
    {
        QVERIFY(open());
        for (const QString& selected : {u"b"_s, u"c"_s, u"a"_s}) {
            click(selected);
            for (const QString& identifier : m_identifiers)
                QCOMPARE(button(identifier)->isChecked(), identifier == selected);
        }
    }

    void assistiveTechnologyChoosesByToggling()
    {
        QVERIFY(open());
        notes();
        button(u"c"_s)->defaultAction()->setChecked(true);
        QCOMPARE(m_controller->currentPane()->paneIdentifier(), u"c"_s);
        QCOMPARE(notes(), (QStringList{u"a will disappear"_s, u"c will appear"_s}));
    }

    void theKeyboardReachesItAndChooses()
    {
        QVERIFY(open());
        button(u"a"_s)->setFocus(Qt::TabFocusReason);
        const std::array steps{std::pair(Qt::Key_Right, u"b"_s), std::pair(Qt::Key_Right, u"c"_s),
                               std::pair(Qt::Key_Left, u"b"_s)};
        for (const auto& [key, identifier] : steps) {
            QTest::keyClick(QApplication::focusWidget(), key);
            QCOMPARE(QApplication::focusWidget(), button(identifier));
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
            QCOMPARE(m_controller->currentPane()->paneIdentifier(), identifier);
        }
    }

    void theToolbarCannotBeHiddenOrMoved()
    {
        QVERIFY(open());
        const PaneToolbar& toolbar = m_controller->toolbar();
        QVERIFY(!toolbar.isMovable());
        QVERIFY(!toolbar.isFloatable());
        QCOMPARE(toolbar.contextMenuPolicy(), Qt::PreventContextMenu);
        QVERIFY(!toolbar.accessibleName().isEmpty());
    }

    void theSelectionIsKeptWhenTheButtonsAreReplaced()
    {
        QVERIFY(open());
        click(u"b"_s);
        notes();
        m_controller->resetToolbar();
        QCOMPARE(m_controller->toolbar().itemIdentifiers(), m_identifiers);
        QVERIFY(button(u"b"_s)->isChecked());
        QVERIFY(button(u"b"_s)->isVisible());
        QCOMPARE(notes(), QStringList());
    }

    void anIdentifierWithoutAPaneHasNoButton()
    {
        QStringList unused;
        PaneToolbar toolbar(u"main.toolbar"_s);
        QVERIFY(toolbar.itemIdentifiers().isEmpty());
        toolbar.setSelectedItemIdentifier(u"nobody"_s);
        toolbar.setItems({{u"a"_s, {}, u"A"_s}});
        QCOMPARE(toolbar.itemIdentifiers(), QStringList{u"a"_s});
        QVERIFY(!toolbar.actions().constFirst()->isChecked());
    }
};

template class RunnableTests<tst_PaneToolbar, QApplication>;
#include "tst_panetoolbar.moc"
