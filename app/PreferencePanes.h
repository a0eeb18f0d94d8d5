#pragma once

#include <memory>

class Bundle;
class LVitAccess;
class StatusItemControl;
class SUUpdater;
class UserDefaults;

/// Registers the panes of the preferences window, in their order. All but the client must outlive the panes. Main
/// thread.
void registerPreferencePanes(UserDefaults& settings, const Bundle& bundle, StatusItemControl& statusItem,
                             const std::shared_ptr<LVitAccess>& client, SUUpdater& updater);
