#pragma once

#include "app/desktop/TrayHost.h"

#include <QIcon>
#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>

#include <memory>

/// The item in the desktop's status bar, with its menu. Shown as long as it exists, wherever and whenever the desktop
/// has a place for it; nothing depends on that. Main thread.
class StatusItem final : public QObject
{
    Q_OBJECT

public:
    explicit StatusItem(QIcon icon, QObject* parent = nullptr);

    /// Whether people can see the item now: then a window may hide.
    [[nodiscard]] bool hostAvailable() const { return m_hostAvailable; }

Q_SIGNALS:
    /// An entry of the menu was chosen: the action, whose data is a tag of StatusMenu.
    void executeAction(const QObject* sender);
    /// The item was clicked: the window is to come back.
    void showRequested();
    /// The place for the item has come, or has gone: then a hidden window has to come back.
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
    bool m_isNotifierItem = false;           // which of the two kinds of host it can show in
    bool m_hostAvailable = false;
};
