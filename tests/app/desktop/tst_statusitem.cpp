#include "app/desktop/StatusItem.h"
#include "app/models/StatusMenu.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QMenu* statusMenu()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto menu = std::ranges::find_if(windows, [](const QWidget* window) {
        const auto* const candidate = qobject_cast<const QMenu*>(window);
        return candidate != nullptr && candidate->title() == u"Pelmora"_s;
    });
    return menu == windows.end() ? nullptr : qobject_cast<QMenu*>(*menu);
}

} // namespace

class tst_StatusItem : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void withoutAStatusBarTheItemHasNoHost()
    {
        const StatusItem item({});
        const QSignalSpy changes(&item, &StatusItem::hostAvailableChanged);
        QVERIFY(!item.hostAvailable());
        QCoreApplication::processEvents();
        QVERIFY(!item.hostAvailable());
        QCOMPARE(changes.size(), 0);
    }

    void itsMenuHasTheEntriesOfTheTable()
    {
        const StatusItem item({});
        const QMenu* const menu = statusMenu();
        QVERIFY(menu != nullptr);
        const QList<QAction*> actions = menu->actions();
        const std::vector<MenuEntry> entries = StatusMenu::entries();
        QCOMPARE(static_cast<std::size_t>(actions.size()), entries.size());
        for (qsizetype index = 0; index < actions.size(); ++index) {
            const MenuEntry& entry = entries[static_cast<std::size_t>(index)];
            QCOMPARE(actions[index]->isSeparator(), entry.isSeparator);
            QCOMPARE(actions[index]->text(), entry.title);
            QVERIFY(actions[index]->isEnabled() && actions[index]->shortcut().isEmpty());
        }
    }

    void eachEntryEmitsItsTag()
    {
        const StatusItem item({});
        QSignalSpy chosen(&item, &StatusItem::executeAction);
        QList<int> tags;
        for (QAction* action : statusMenu()->actions()) {
            if (action->isSeparator())
                continue;
            action->trigger();
            const auto* const sender = qobject_cast<const QAction*>(chosen.takeFirst().at(0).value<const QObject*>());
            tags.append(sender->data().toInt());
        }
        QCOMPARE(tags, (QList<int>{10, 11, 12, 13, 14, 15}));
    }

    void theMenuIsDeletedWithTheItem()
    {
        {
            const StatusItem item({});
        }
        QVERIFY(statusMenu() == nullptr);
    }
};

template class RunnableTests<tst_StatusItem, QApplication>;
#include "tst_statusitem.moc"
