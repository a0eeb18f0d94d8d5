#pragma once

/// What a pane asks of the application about its item in the status bar. Main thread only.
class StatusItemControl
{
public:
    StatusItemControl() = default;
    StatusItemControl(const StatusItemControl&) = delete;
    StatusItemControl& operator=(const StatusItemControl&) = delete;
    virtual ~StatusItemControl() = default;

    /// Shows the item, when the settings want one.
    virtual void showStatusItem() = 0;
    virtual void hideStatusItem() = 0;
};
