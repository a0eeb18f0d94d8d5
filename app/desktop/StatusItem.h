#pragma once

#include "app/desktop/TrayHost.h"

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

#include <memory>

/// The application's status item with its menu, shown whenever the desktop has a place for it. Main thread.
class StatusItem final : public QObject
{
    Q_OBJECT

public:
    explicit StatusItem(QIcon icon, QObject* parent = nullptr);

    /// Whether the item is visible: then a window may hide.
    [[nodiscard]] bool hostAvailable() const { return m_hostAvailable; }

Q_SIGNALS:
    /// A menu entry was chosen: the action, whose data is a tag of StatusMenu.
    void executeAction(const QObject* sender);
    /// The item was clicked.
    void showRequested();
    /// The item has become visible or invisible.
    void hostAvailableChanged(bool available);

private:
    void fillMenu();
    void followHost();
    void createItem();
    [[nodiscard]] bool isHosted() const;

    const QIcon m_icon;
    QMenu m_menu;
    TrayHost m_host;
    std::unique_ptr<QSystemTrayIcon> m_item; // made when there is a host for the first time
    bool m_isNotifierItem = false;           // the kind of host that it can use
    bool m_hostAvailable = false;
};
