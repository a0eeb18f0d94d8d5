#pragma once

#include "platform/Bundle.h"
#include "prefs/MVPreference.h"

#include <QObject>

#include <memory>

class QScrollArea;

/// What the panes share: a view that comes from a layout file, loaded when it is first asked for, and an icon among the
/// application's images.
class PaneViewController : public QObject, public MVPreference
{
    Q_OBJECT

public:
    ~PaneViewController() override;

    [[nodiscard]] QIcon paneIcon() const override;
    [[nodiscard]] QWidget* paneView() override;

    /// The pane's view; loads it if need be.
    QScrollArea& view();
    [[nodiscard]] bool isViewLoaded() const { return m_view != nullptr; }

protected:
    /// The name is the image's, without its type.
    PaneViewController(QString imageName, Bundle bundle);

    /// Builds what the layout file describes in the view.
    virtual void loadView(QScrollArea& view) = 0;
    /// The view is there, and empty of values.
    virtual void viewDidLoad() = 0;

private:
    QString m_imageName;
    Bundle m_bundle;
    std::unique_ptr<QScrollArea> m_view;
};
