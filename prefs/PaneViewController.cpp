#include "prefs/PaneViewController.h"

#include "prefs/PaneContentView.h"
#include "prefs/PaneGrid.h"
#include "support/MXLog.h"
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
    // The view scrolls only with large fonts; then it can get the keyboard focus.
    view.setFocusPolicy(Qt::NoFocus);
    QObject::connect(view.verticalScrollBar(), &QScrollBar::rangeChanged, &view,
                     [&view](int /*first*/, int last) { view.setFocusPolicy(last > 0 ? Qt::TabFocus : Qt::NoFocus); });
}

} // namespace

PaneViewController::PaneViewController(Description description, Bundle bundle)
    : m_description(std::move(description))
    , m_bundle(std::move(bundle))
{
}

PaneViewController::~PaneViewController() = default;

QIcon PaneViewController::paneIcon() const
{
    const std::optional<QString> path = m_bundle.pathForResource(m_description.image, u"svg"_s);
    return path ? glyphIcon(*path) : QIcon();
}

QWidget* PaneViewController::paneView()
{
    return &view();
}

void PaneViewController::initialization()
{
    MXLog::logDebug("'{}' initialization", metaObject()->className());
    view();
}

void PaneViewController::paneWillAppear()
{
    MXLog::logDebug("'{}' paneWillAppear", metaObject()->className());
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
