#pragma once

#include "app/desktop/StatusItem.h"

#include <QObject>

#include <memory>

class Bundle;
class UserDefaults;

/// The application's item in the status bar, while the settings want one. Main thread only.
class StatusItemKeeper final : public QObject
{
    Q_OBJECT

public:
    /// Both must outlive it. The icon comes from the bundle.
    StatusItemKeeper(const UserDefaults& settings, const Bundle& bundle);

    /// Shows the item, when the settings want one. Never two.
    void show();
    void hide();
    /// Whether people can see the item now: then a window may hide.
    [[nodiscard]] bool isSeen() const { return m_item && m_item->hostAvailable(); }

Q_SIGNALS:
    /// An entry of the menu was chosen: the action, whose data is a tag of StatusMenu.
    void executeAction(const QObject* sender);
    /// The item was clicked: the window is to come back.
    void showRequested();
    /// People cannot see the item any more: nothing else could bring a hidden window back.
    void lost();

private:
    const UserDefaults& m_settings;
    const Bundle& m_bundle;
    std::unique_ptr<StatusItem> m_item;
};
