#include "attestation/viewer/AccessibleChildren.h"

#include <QAccessibleInterface>
#include <QRect>

#include <utility>

void AccessibleChildren::clear()
{
    for (const QAccessible::Id id : std::exchange(m_ids, {}))
        QAccessible::deleteAccessibleInterface(id);
}

QAccessibleInterface* AccessibleChildren::at(int index) const
{
    return index >= 0 && index < count() ? QAccessible::accessibleInterface(m_ids[std::size_t(index)]) : nullptr;
}

int AccessibleChildren::indexOf(const QAccessibleInterface* child) const
{
    for (int index = 0; index < count(); ++index) {
        if (at(index) == child)
            return index;
    }
    return -1;
}

QAccessibleInterface* AccessibleChildren::under(QPoint place) const
{
    for (int index = 0; index < count(); ++index) {
        if (QAccessibleInterface* child = at(index); child != nullptr && child->rect().contains(place))
            return child;
    }
    return nullptr;
}
