#pragma once

#include <QIcon>
#include <QString>

class QWidget;

/// A pane of the preferences window. The messages that a pane need not answer do nothing here. Main thread only.
class MVPreference
{
public:
    MVPreference() = default;
    MVPreference(const MVPreference&) = delete;
    MVPreference& operator=(const MVPreference&) = delete;
    virtual ~MVPreference() = default;

    /// Tells the pane from all others; also its button's identifier.
    [[nodiscard]] virtual QString paneIdentifier() const = 0;
    /// What its button in the toolbar shows.
    [[nodiscard]] virtual QIcon paneIcon() const = 0;
    [[nodiscard]] virtual QString paneName() const = 0;
    /// What the window shows of it: always the same widget, which the pane owns.
    [[nodiscard]] virtual QWidget* paneView() = 0;

    /// One-time preparation, when the pane is registered.
    virtual void initialization() {}
    /// The counterpart of initialization(); never sent.
    virtual void deinitialization() {}
    /// The pane is about to be shown, or is shown.
    virtual void paneWillAppear() {}
    virtual void paneDidAppear() {}
    /// Another pane is about to replace it, or has done so.
    virtual void paneWillDisappear() {}
    virtual void paneDidDisappear() {}
};
