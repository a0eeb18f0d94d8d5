#include "app/desktop/StatusItem.h"

#include "app/models/StatusMenu.h"

#include <utility>

StatusItem::StatusItem(QIcon icon, QObject* parent)
    : QObject(parent)
    , m_icon(std::move(icon))
{
    fillMenu();
    connect(&m_host, &TrayHost::changed, this, &StatusItem::followHost);
    followHost();
}

void StatusItem::fillMenu()
{
    m_menu.setTitle(StatusMenu::title.toString());
    for (const MenuEntry& entry : StatusMenu::entries()) {
        if (entry.isSeparator) {
            m_menu.addSeparator();
            continue;
        }
        QAction* const action = m_menu.addAction(entry.actionText());
        action->setData(entry.tag);
        connect(action, &QAction::triggered, this, [this, action] { Q_EMIT executeAction(action); });
    }
}

void StatusItem::followHost()
{
    if (!m_item && (m_host.hasNotifierHost() || m_host.hasX11Tray()))
        createItem();
    const bool available = isHosted();
    if (std::exchange(m_hostAvailable, available) != available)
        Q_EMIT hostAvailableChanged(available);
}

/// Qt chooses the kind of host for all items of a process when the first one is made. Without a host it would choose
/// the X11 tray, and never use the other kind.
void StatusItem::createItem()
{
    m_isNotifierItem = m_host.hasNotifierHost();
    m_item = std::make_unique<QSystemTrayIcon>(m_icon);
    m_item->setToolTip(StatusMenu::title.toString());
    m_item->setContextMenu(&m_menu);
    connect(m_item.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            Q_EMIT showRequested();
    });
    m_item->show();
}

bool StatusItem::isHosted() const
{
    // On some platforms Qt does not support status items.
    const bool isThere = m_isNotifierItem ? m_host.hasNotifierHost() : m_host.hasX11Tray();
    return m_item && isThere && QSystemTrayIcon::isSystemTrayAvailable();
}
