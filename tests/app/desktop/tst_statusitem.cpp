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
        return candidate != nullptr && candidate->title() == StatusMenu::title;
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
        QStringList texts;
        for (const QAction* action : menu->actions())
            texts.append(action->isSeparator() ? u"-"_s : action->text());
        QCOMPARE(texts, (QStringList{u"Lecture de la carte Vitale"_s, u"Voir l'attestation"_s,
                                     u"Imprimer l'attestation"_s, u"Enregistrer l'attestation"_s, u"-"_s,
                                     u"Ouvrir le dossier des attestations"_s, u"-"_s, u"Quitter Pelmora"_s}));
        for (const QAction* action : menu->actions())
            QVERIFY(action->isEnabled() && action->shortcut().isEmpty());
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
