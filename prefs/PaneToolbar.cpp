#include "prefs/PaneToolbar.h"

#include <QAction>
#include <QActionGroup>
#include <QToolButton>

using namespace Qt::StringLiterals;

PaneToolbar::PaneToolbar(const QString& identifier)
    : m_items(std::make_unique<QActionGroup>(nullptr))
{
    setObjectName(identifier);
    setAccessibleName(u"Volets des préférences"_s);
    setWindowTitle(accessibleName());
    setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    setIconSize({32, 32});
    setMovable(false);
    setFloatable(false);
    // The context menu would allow hiding the toolbar.
    setContextMenuPolicy(Qt::PreventContextMenu);
}

PaneToolbar::~PaneToolbar() = default;

void PaneToolbar::setItems(const std::vector<Item>& items)
{
    m_items = std::make_unique<QActionGroup>(nullptr);
    for (const Item& item : items)
        addItem(item);
    showSelection();
}

QStringList PaneToolbar::itemIdentifiers() const
{
    QStringList identifiers;
    for (const QAction* item : m_items->actions())
        identifiers.append(itemIdentifier(*item));
    return identifiers;
}

QString PaneToolbar::itemIdentifier(const QAction& item)
{
    return item.data().toString();
}

void PaneToolbar::setSelectedItemIdentifier(const QString& identifier)
{
    m_selected = identifier;
    showSelection();
}

void PaneToolbar::focusSelection()
{
    if (QWidget* button = widgetForAction(m_items->checkedAction()))
        button->setFocus();
}

void PaneToolbar::addItem(const Item& item)
{
    QAction* action = m_items->addAction(item.image, item.label);
    action->setCheckable(true);
    action->setData(item.identifier);
    // The label is visible already.
    action->setToolTip({});
    addAction(action);
    // Assistive technology toggles a button without triggering it; pressing the selected one only triggers it.
    connect(action, &QAction::toggled, this, [this, action](bool on) { itemToggled(*action, on); });
    connect(action, &QAction::triggered, this, [this, action] { Q_EMIT itemChosen(action); });
    if (auto* button = qobject_cast<QToolButton*>(widgetForAction(action))) {
        button->setFocusPolicy(Qt::TabFocus);
        button->setAutoExclusive(true);
        button->setAccessibleName(item.label);
    }
}

void PaneToolbar::itemToggled(QAction& item, bool on)
{
    if (on && itemIdentifier(item) != m_selected)
        Q_EMIT itemChosen(&item);
}

void PaneToolbar::showSelection()
{
    for (QAction* item : m_items->actions()) {
        if (itemIdentifier(*item) == m_selected)
            item->setChecked(true);
    }
}
