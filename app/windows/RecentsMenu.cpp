#include "app/windows/RecentsMenu.h"

#include "app/windows/MainWindow.h"

#include <QAction>

RecentsMenu::RecentsMenu(RecentAttestations& recents, MainWindow& window)
    : m_recents(recents)
    , m_window(window)
{
}

void RecentsMenu::update()
{
    auto* menu = new QMenu(RecentAttestations::menuTitle.toString(), &m_window);
    for (const MenuEntry& entry : m_recents.menu())
        addEntry(*menu, entry);
    m_window.recentsMenuItem()->setMenu(menu);
    // Deleted later: this may run in a signal of its entries.
    if (m_menu)
        m_menu->deleteLater();
    m_menu = menu;
}

void RecentsMenu::add(const QString& path)
{
    if (m_recents.add(path))
        update();
}

void RecentsMenu::clear()
{
    m_recents.clear();
    update();
}

void RecentsMenu::addEntry(QMenu& menu, const MenuEntry& entry)
{
    if (entry.isSeparator) {
        menu.addSeparator();
        return;
    }
    QAction* action = menu.addAction(entry.actionText());
    action->setData(entry.tag);
    action->setEnabled(entry.enabled);
    if (entry.tag == RecentAttestations::clearTag)
        connect(action, &QAction::triggered, this, &RecentsMenu::clearRequested);
    else
        connect(action, &QAction::triggered, this, [this, action] { Q_EMIT openRequested(action); });
}
