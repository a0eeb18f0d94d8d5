#pragma once

#include "app/desktop/StatusItem.h"

#include <QObject>

#include <memory>

class Bundle;
class UserDefaults;

/// The application's status item, shown if the setting is on. Main thread only.
class StatusItemKeeper final : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive it.
    StatusItemKeeper(const UserDefaults& settings, const Bundle& bundle);

    /// Shows the item if the setting is on and it is not shown yet.
    void show();
    void hide();
    /// Whether the item is visible: then a window may hide.
    [[nodiscard]] bool isSeen() const { return m_item && m_item->hostAvailable(); }

Q_SIGNALS:
    /// A menu entry was chosen: the action, whose data is a tag of StatusMenu.
    void executeAction(const QObject* sender);
    /// The item was clicked.
    void showRequested();
    /// The item is no longer visible, so it cannot bring a hidden window back.
    void lost();

private:
    const UserDefaults& m_settings;
    const Bundle& m_bundle;
    std::unique_ptr<StatusItem> m_item;
};
