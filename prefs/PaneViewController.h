#pragma once

#include "platform/Bundle.h"
#include "prefs/MVPreference.h"

#include <QObject>

#include <memory>

class QScrollArea;

/// Base of the panes: a view from a layout file, loaded at first use, and an icon from the resources.
class PaneViewController : public QObject, public MVPreference
{
    Q_OBJECT

public:
    ~PaneViewController() override;

    [[nodiscard]] QString paneIdentifier() const override { return m_description.identifier; }
    [[nodiscard]] QString paneName() const override { return m_description.name; }
    [[nodiscard]] QIcon paneIcon() const override;
    [[nodiscard]] QWidget* paneView() override;

    /// Loads the view.
    void initialization() override;
    void paneWillAppear() override;

    /// Loads the view if needed.
    QScrollArea& view();
    [[nodiscard]] bool isViewLoaded() const { return m_view != nullptr; }

protected:
    struct Description
    {
        QString identifier;
        QString name;
        QString image; // without its type
    };

    PaneViewController(Description description, Bundle bundle);

    /// Builds the layout in the view.
    virtual void loadView(QScrollArea& view) = 0;
    /// Called when the view was loaded, without values.
    virtual void viewDidLoad() = 0;

private:
    Description m_description;
    Bundle m_bundle;
    std::unique_ptr<QScrollArea> m_view;
};
