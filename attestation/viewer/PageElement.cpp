#include "attestation/viewer/PageElement.h"

#include "attestation/viewer/DocumentView.h"

#include <utility>

PageElement::PageElement(DocumentView& view, QAccessibleInterface& parent, Content content)
    : m_view(&view)
    , m_parent(parent)
    , m_content(std::move(content))
{
}

int PageElement::indexOfChild(const QAccessibleInterface* child) const
{
    return m_children.indexOf(child);
}

QAccessibleInterface* PageElement::childAt(int x, int y) const
{
    return m_children.under({x, y});
}

QString PageElement::text(QAccessible::Text kind) const
{
    return kind == QAccessible::Name ? m_content.name : QString();
}

void PageElement::setText(QAccessible::Text /*kind*/, const QString& /*text*/)
{
}

QRect PageElement::rect() const
{
    if (m_view.isNull())
        return {};
    const QRect place = m_view->placeOf(m_content.part);
    return {m_view->mapToGlobal(place.topLeft()), place.size()};
}

QAccessible::State PageElement::state() const
{
    // As visible as the page.
    const QAccessible::State ofParent = m_parent.state();
    QAccessible::State state;
    state.readOnly = true;
    state.invisible = ofParent.invisible;
    state.offscreen = ofParent.offscreen;
    return state;
}
