#include "tests/app/windows/MainWindowTest.h"
#include "tests/common/RunnableTests.h"

#include <QAccessible>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QSignalSpy>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

QString withoutMnemonic(const QString& text)
{
    return QString(text).remove(u'&');
}

// The letters after "&" in texts, in upper case.
QStringList mnemonics(const QStringList& texts)
{
    QStringList letters;
    for (const QString& text : texts) {
        if (const qsizetype mark = text.indexOf(u'&'); mark >= 0)
            letters.append(text.sliced(mark + 1, 1).toUpper());
    }
    return letters;
}

bool hasDoubles(QStringList letters)
{
    return letters.removeDuplicates() > 0;
}

QStringList textsOf(const QList<QAction*>& actions)
{
    QStringList texts;
    for (const QAction* action : actions)
        texts.append(action->text());
    return texts;
}

} // namespace

class tst_MainWindow final : public MainWindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void tilesHaveTheirColoursTitlesAndNames()
    {
        for (const ExpectedTile& expected : expectedTiles) {
            const MXButton* button = (*m_window.*expected.outlet)();
            QCOMPARE(button->objectName(), QLatin1String(expected.name));
            QCOMPARE(button->text(), expected.title.toString());
            QCOMPARE(QAccessible::queryAccessibleInterface(const_cast<MXButton*>(button))->text(QAccessible::Name),
                     expected.title.toString());
            const QImage picture = shot(*m_window, button);
            const QColor colour = expected.colour
                                      ? QColor((*expected.colour)[0], (*expected.colour)[1], (*expected.colour)[2])
                                      : m_window->palette().color(QPalette::Window);
            QCOMPARE(picture.pixelColor(0, 0), colour);
            QCOMPARE(picture.pixelColor(picture.width() - 1, picture.height() - 1), colour);
        }
    }

    void tilesShowTheirImageAboveTheirTitle()
    {
        for (const ExpectedTile& expected : expectedTiles) {
            const MXButton* button = (*m_window.*expected.outlet)();
            const QRect image = button->cell().imageRectForBounds(button->rect(), *button);
            const QRect title = button->cell().titleRectForBounds(button->rect(), *button);
            const QImage picture = shot(*m_window, button);
            QVERIFY2(hasInk(picture, image), expected.name);
            QVERIFY2(hasInk(picture, title), expected.name);
            QVERIFY(image.bottom() < title.top());
        }
    }

    void tilesAndTheirMenuEntriesEmitTheSameRequests()
    {
        for (const ExpectedTile& expected : expectedTiles) {
            const QSignalSpy asked(m_window.get(), expected.signal);
            QTest::mouseClick((*m_window.*expected.outlet)(), Qt::LeftButton);
            QCOMPARE(asked.count(), 1);
        }
        for (const ExpectedItem& expected : expectedItems) {
            if (!expected.signal)
                continue;
            const QSignalSpy asked(m_window.get(), expected.signal);
            action(expected.name)->trigger();
            QCOMPARE(asked.count(), 1);
        }
    }

    void menusHaveTheirEntriesInOrder()
    {
        for (const char* menu : {"applicationMenu", "fileMenu", "helpMenu"}) {
            QStringList expected;
            for (const ExpectedItem& item : expectedItems) {
                if (qstrcmp(item.menu, menu) == 0)
                    expected.append(item.title.toString());
            }
            QStringList titles;
            for (const QAction* entry : m_window->findChild<QMenu*>(QLatin1String(menu))->actions()) {
                if (!entry->isSeparator())
                    titles.append(withoutMnemonic(entry->text()));
            }
            QCOMPARE(titles, expected);
        }
        QStringList menus = textsOf(m_window->menuBar()->actions());
        QCOMPARE(withoutMnemonic(menus.join(u' ')), u"Pelmora Fichier Aide"_s);
    }

    void menuEntriesShowTheirShortcuts()
    {
        for (const ExpectedItem& expected : expectedItems) {
            const QAction* entry = action(expected.name);
            QCOMPARE(entry->shortcut(), QKeySequence(expected.shortcut.toString()));
            QVERIFY(entry->isShortcutVisibleInContextMenu() || entry->shortcut().isEmpty());
        }
    }

    void theToolTipsOfTilesShowTheShortcutsOfTheirMenuEntries()
    {
        for (const ExpectedTile& tile : expectedTiles) {
            for (const ExpectedItem& item : expectedItems) {
                if (item.signal != tile.signal || item.shortcut.isEmpty())
                    continue;
                // The tool tips have French key names. The table of shortcuts has English ones.
                const QString keys = item.shortcut.toString().replace(u"Shift"_s, u"Maj"_s);
                const QString toolTip = (*m_window.*tile.outlet)()->toolTip();
                QVERIFY2(toolTip.endsWith(u" ("_s + keys + u')'), tile.name);
            }
        }
    }

    void shortcutsEmitTheirRequests()
    {
        for (const ExpectedItem& expected : expectedItems) {
            if (expected.shortcut.isEmpty() || !expected.signal)
                continue;
            const QKeyCombination keys = QKeySequence(expected.shortcut.toString())[0];
            const QSignalSpy asked(m_window.get(), expected.signal);
            QTest::keyClick(m_window.get(), keys.key(), keys.keyboardModifiers());
            QVERIFY2(asked.count() == 1, expected.name);
        }
    }

    void noTwoMnemonicsOrShortcutsClash()
    {
        QVERIFY(!hasDoubles(mnemonics(textsOf(m_window->menuBar()->actions()))));
        QCOMPARE(mnemonics(textsOf(m_window->menuBar()->actions())).size(), 3);
        QStringList shortcuts;
        for (const QMenu* menu : m_window->menuBar()->findChildren<QMenu*>()) {
            QVERIFY(!hasDoubles(mnemonics(textsOf(menu->actions()))));
            for (const QAction* entry : menu->actions()) {
                if (!entry->shortcut().isEmpty())
                    shortcuts.append(entry->shortcut().toString());
            }
        }
        QVERIFY(!hasDoubles(shortcuts));
    }

    void validationDisablesOnlyTheEntriesOfCardActions()
    {
        for (const bool enabled : {false, true}) {
            m_window->validateMenuItems(
                [this, enabled](const QAction& menuItem) { return enabled || !m_window->isCardAction(menuItem); });
            for (const ExpectedItem& expected : expectedItems)
                QVERIFY2(action(expected.name)->isEnabled() == (enabled || !expected.cardAction), expected.name);
            for (const ExpectedTile& expected : expectedTiles)
                QVERIFY2((*m_window.*expected.outlet)()->isEnabled(), expected.name);
        }
    }

    void aDisabledTileEmitsNothingAndTheMenuStillQuits()
    {
        const QSignalSpy quit(m_window.get(), &MainWindow::quitRequested);
        m_window->quitButton()->setEnabled(false);
        QTest::mouseClick(m_window->quitButton(), Qt::LeftButton);
        QCOMPARE(quit.count(), 0);
        QTest::keyClick(m_window.get(), Qt::Key_Q, Qt::ControlModifier);
        QCOMPARE(quit.count(), 1);
    }

    void theRecentFilesEntryHasASubmenu()
    {
        QMenu recents(u"Recents"_s);
        m_window->recentsMenuItem()->setMenu(&recents);
        QCOMPARE(m_window->recentsMenuItem()->text(), u"Recents"_s);
        QCOMPARE(m_window->recentsMenuItem()->menu(), &recents);
        QCOMPARE(m_window->updateMenuItem(), action("updateMenuItem"));
    }

    void tabFocusesTheTilesInReadingOrder()
    {
        QCOMPARE(QApplication::focusWidget(), m_window->readButton());
        for (std::size_t step = 1; step <= expectedTiles.size(); ++step) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            const ExpectedTile& expected = expectedTiles.at(step % expectedTiles.size());
            QCOMPARE(QApplication::focusWidget(), (*m_window.*expected.outlet)());
        }
    }

    void returnPressesTheFocusedTileAndEscapeNothing()
    {
        const QSignalSpy viewed(m_window.get(), &MainWindow::viewRequested);
        m_window->viewButton()->setFocus();
        QTest::keyClick(m_window->viewButton(), Qt::Key_Return);
        QCOMPARE(viewed.count(), 1);
        QTest::keyClick(m_window->viewButton(), Qt::Key_Escape);
        QVERIFY(m_window->isVisible());
        QCOMPARE(viewed.count(), 1);
    }
};

template class RunnableTests<tst_MainWindow, QApplication>;
#include "tst_mainwindow.moc"
