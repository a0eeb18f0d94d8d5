#include "prefs/MVPreferencesController.h"

#include "platform/gui/WindowActivation.h"
#include "prefs/MVPreference.h"
#include "prefs/PaneContentView.h"
#include "prefs/PaneRoom.h"
#include "prefs/PaneToolbar.h"
#include "prefs/ui_PreferencesWindow.h"

#include <QAction>
#include <QLayout>
#include <QScreen>
#include <QStyle>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// The first pane that meets the condition, or null.
template <typename Condition>
MVPreference* firstPane(const MVPreferencesController::Panes& panes, Condition condition)
{
    const auto found = std::ranges::find_if(panes, [&](const auto& pane) { return condition(*pane); });
    return found == panes.end() ? nullptr : found->get();
}

} // namespace

MVPreferencesController::MVPreferencesController()
{
    setupToolbar();
}

MVPreferencesController::~MVPreferencesController()
{
    // The panes own the views.
    if (m_contentView)
        m_contentView->removeAllSubviews();
}

const QStringList& MVPreferencesController::identifiers()
{
    if (!m_identifiers) {
        m_identifiers.emplace();
        for (const auto& pane : m_panes)
            m_identifiers->append(pane->paneIdentifier());
    }
    return *m_identifiers;
}

void MVPreferencesController::resigterPreferencesPane(std::shared_ptr<MVPreference> pane)
{
    if (pane && !isRegistered(pane.get()))
        addPane(std::move(pane));
}

void MVPreferencesController::unregisterPreferencesPane(const MVPreference* pane)
{
    if (isRegistered(pane))
        removePane(pane);
}

void MVPreferencesController::addPane(std::shared_ptr<MVPreference> pane)
{
    MVPreference& added = *m_panes.emplace_back(std::move(pane));
    added.initialization();
    resetToolbar();
    if (!m_currentPane)
        showPane(&added);
}

void MVPreferencesController::removePane(const MVPreference* /*pane*/)
{
    // On purpose: panes stay registered.
}

void MVPreferencesController::showPane(MVPreference* pane)
{
    if (pane == m_currentPane || !m_window)
        return;
    if (!pane) {
        m_contentView->removeAllSubviews();
        m_currentPane = nullptr;
        return;
    }
    if (!isRegistered(pane))
        return;

    if (m_contentView->subviews().isEmpty()) {
        paneWillAppear(pane);
        m_contentView->setOnlySubview(*pane->paneView());
        paneDidAppear(pane);
    } else {
        fadeTo(*pane);
    }
    // Set before the button is selected, which chooses the pane again.
    m_currentPane = pane;
    m_toolbar->setSelectedItemIdentifier(pane->paneIdentifier());
}

void MVPreferencesController::fadeTo(MVPreference& pane)
{
    // The lowest view is not always that of the current pane: during a fade it is the one that fades out.
    QWidget* oldView = m_contentView->subviews().constFirst();
    MVPreference* oldPane = paneForView(oldView);
    m_contentView->addTransparentSubview(*pane.paneView());
    paneWillDisappear(oldPane);
    paneWillAppear(&pane);
    m_contentView->fadeToTop([this, oldView, oldPane, newPane = &pane] {
        // A pane that was chosen again while it faded out is the current one now, and its view stays.
        if (!m_currentPane || m_currentPane->paneView() != oldView)
            m_contentView->removeSubview(oldView);
        paneDidDisappear(oldPane);
        paneDidAppear(newPane);
    });
}

void MVPreferencesController::showNeighbour(qsizetype step)
{
    const QStringList& all = identifiers();
    if (!m_currentPane || all.isEmpty())
        return;
    const qsizetype next = all.indexOf(m_currentPane->paneIdentifier()) + step + all.size();
    showPane(paneForIdentifier(all.at(next % all.size())));
    m_toolbar->focusSelection();
}

void MVPreferencesController::selectPane(const QAction* sender)
{
    if (!sender)
        return;
    if (MVPreference* pane = paneForIdentifier(PaneToolbar::itemIdentifier(*sender)))
        showPane(pane);
}

void MVPreferencesController::show()
{
    checkWindowLoaded();
    bringToFront(*m_window);
}

void MVPreferencesController::hide()
{
    if (m_window)
        m_window->hide();
}

void MVPreferencesController::showPaneWithIdentifier(QStringView identifier)
{
    show();
    if (MVPreference* pane = paneForIdentifier(identifier)) {
        // Later: the window first shows its last pane, then changes to this one.
        QMetaObject::invokeMethod(this, [this, pane] { showPane(pane); }, Qt::QueuedConnection);
    }
}

MVPreference* MVPreferencesController::paneForView(const QWidget* view) const
{
    return firstPane(m_panes, [view](MVPreference& pane) { return pane.paneView() == view; });
}

MVPreference* MVPreferencesController::paneForIdentifier(QStringView identifier) const
{
    return firstPane(m_panes, [identifier](const MVPreference& pane) { return pane.paneIdentifier() == identifier; });
}

void MVPreferencesController::setupToolbar()
{
    m_toolbar = std::make_unique<PaneToolbar>(u"main.toolbar"_s);
    connect(m_toolbar.get(), &PaneToolbar::itemChosen, this, &MVPreferencesController::selectPane);
}

void MVPreferencesController::resetToolbar()
{
    if (!m_window)
        return;
    m_window->removeToolBar(m_toolbar.get());
    attachToolbar();
}

void MVPreferencesController::attachToolbar()
{
    std::vector<PaneToolbar::Item> items;
    for (const QString& identifier : identifiers()) {
        if (const MVPreference* pane = paneForIdentifier(identifier))
            items.push_back({pane->paneIdentifier(), pane->paneIcon(), pane->paneName()});
    }
    m_toolbar->setItems(items);
    m_window->addToolBar(m_toolbar.get());
    m_toolbar->show();
}

void MVPreferencesController::initWindow()
{
    attachToolbar();
    giveRoom();
    if (!m_panes.empty())
        showPane(m_panes.front().get());
}

void MVPreferencesController::checkWindowLoaded()
{
    if (!m_window)
        windowDidLoad();
}

void MVPreferencesController::windowDidLoad()
{
    m_window = std::make_unique<QMainWindow>();
    Ui::PreferencesWindow layout;
    layout.setupUi(m_window.get());
    m_contentView = layout.contentView;
    m_window->layout()->setSizeConstraint(QLayout::SetFixedSize);
    m_window->setWindowTitle(u"Préférences Pelmora"_s);
    layout.closeAction->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_W), QKeySequence(Qt::Key_Escape)});
    connect(layout.closeAction, &QAction::triggered, m_window.get(), &QWidget::close);
    connect(layout.nextPaneAction, &QAction::triggered, this, [this] { showNeighbour(1); });
    connect(layout.previousPaneAction, &QAction::triggered, this, [this] { showNeighbour(-1); });
    initWindow();
    showPane(m_currentPane);
}

void MVPreferencesController::giveRoom()
{
    QList<QWidget*> views;
    for (const auto& pane : m_panes)
        views.append(pane->paneView());
    const QSize toolbar = m_toolbar->sizeHint();
    const int titleBar = m_window->style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, m_window.get());
    const QSize screen = m_window->screen()->availableSize();
    m_contentView->setFixedSize(paneRoom(views, toolbar.width(), screen - QSize(0, toolbar.height() + titleBar)));
}

void MVPreferencesController::paneWillAppear(MVPreference* pane)
{
    if (pane)
        pane->paneWillAppear();
}

void MVPreferencesController::paneDidAppear(MVPreference* pane)
{
    if (pane)
        pane->paneDidAppear();
}

void MVPreferencesController::paneWillDisappear(MVPreference* pane)
{
    if (pane)
        pane->paneWillDisappear();
}

void MVPreferencesController::paneDidDisappear(MVPreference* pane)
{
    if (pane)
        pane->paneDidDisappear();
}

bool MVPreferencesController::isRegistered(const MVPreference* pane) const
{
    return std::ranges::any_of(m_panes, [pane](const auto& registered) { return registered.get() == pane; });
}
