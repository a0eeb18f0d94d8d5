#pragma once

#include "app/models/RecentAttestations.h"

#include <QMenu>
#include <QObject>
#include <QPointer>

class MainWindow;

/// The submenu of recently saved attestations. Main thread only.
class RecentsMenu final : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive it.
    RecentsMenu(RecentAttestations& recents, MainWindow& window);

    /// Rebuilds the menu.
    void update();
    void add(const QString& path);
    void clear();

Q_SIGNALS:
    /// An entry was chosen: the action, whose data is its tag.
    void openRequested(const QObject* sender);
    void clearRequested();

private:
    void addEntry(QMenu& menu, const MenuEntry& entry);

    RecentAttestations& m_recents;
    MainWindow& m_window;
    QPointer<QMenu> m_menu; // belongs to the window
};
