#pragma once

#include <QIcon>
#include <QString>

class QWidget;

/// A pane of the preferences window. Optional messages do nothing here. Main thread only.
class MVPreference
{
public:
    MVPreference() = default;
    Q_DISABLE_COPY(MVPreference)
    virtual ~MVPreference() = default;

    /// Unique; also the identifier of its button.
    [[nodiscard]] virtual QString paneIdentifier() const = 0;
    /// Icon and label of its button in the toolbar.
    [[nodiscard]] virtual QIcon paneIcon() const = 0;
    [[nodiscard]] virtual QString paneName() const = 0;
    /// Always the same widget, which the pane owns.
    [[nodiscard]] virtual QWidget* paneView() = 0;

    /// Called once, when the pane is registered.
    virtual void initialization() {}
    /// The counterpart of initialization(); never called.
    virtual void deinitialization() {}
    /// Called before and after the pane is shown.
    virtual void paneWillAppear() {}
    virtual void paneDidAppear() {}
    /// Called before and after another pane replaces it.
    virtual void paneWillDisappear() {}
    virtual void paneDidDisappear() {}
};
