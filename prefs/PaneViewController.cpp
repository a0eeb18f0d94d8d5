#include "prefs/PaneViewController.h"

#include "prefs/PaneContentView.h"
#include "prefs/PaneGrid.h"
#include "support/views/GlyphIcon.h"

#include <QGridLayout>
#include <QScrollArea>
#include <QScrollBar>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

void prepare(QScrollArea& view)
{
    if (auto* grid = view.findChild<QGridLayout*>(u"grid"_s))
        arrangePaneGrid(*grid, PaneContentView::paneSize.width());
    // There is something to scroll only where the user has chosen large letters; the keyboard reaches it then.
    view.setFocusPolicy(Qt::NoFocus);
    QObject::connect(view.verticalScrollBar(), &QScrollBar::rangeChanged, &view,
                     [&view](int /*first*/, int last) { view.setFocusPolicy(last > 0 ? Qt::TabFocus : Qt::NoFocus); });
}

} // namespace

PaneViewController::PaneViewController(QString imageName, Bundle bundle)
    : m_imageName(std::move(imageName))
    , m_bundle(std::move(bundle))
{
}

PaneViewController::~PaneViewController() = default;

QIcon PaneViewController::paneIcon() const
{
    const std::optional<QString> path = m_bundle.pathForResource(m_imageName, u"svg"_s);
    return path ? glyphIcon(*path) : QIcon();
}

QWidget* PaneViewController::paneView()
{
    return &view();
}

QScrollArea& PaneViewController::view()
{
    if (!m_view) {
        m_view = std::make_unique<QScrollArea>();
        loadView(*m_view);
        prepare(*m_view);
        viewDidLoad();
    }
    return *m_view;
}
