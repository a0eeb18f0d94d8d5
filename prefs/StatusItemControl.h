#pragma once

/// What a pane needs of the application's status item. Main thread only.
class StatusItemControl
{
public:
    StatusItemControl() = default;
    StatusItemControl(const StatusItemControl&) = delete;
    StatusItemControl& operator=(const StatusItemControl&) = delete;
    virtual ~StatusItemControl() = default;

    /// Shows the item if the setting is on.
    virtual void showStatusItem() = 0;
    virtual void hideStatusItem() = 0;
};
