#pragma once

#include <QAccessible>
#include <QPoint>

#include <vector>

class QAccessibleInterface;

/// The children of an element of the accessible tree. Qt's registry owns them and may end them first: they are known by
/// their numbers there, and given back with this object.
class AccessibleChildren
{
public:
    AccessibleChildren() = default;
    ~AccessibleChildren() { clear(); }
    Q_DISABLE_COPY_MOVE(AccessibleChildren)

    /// Hands a new child over to the registry.
    void add(QAccessibleInterface* child) { m_ids.push_back(QAccessible::registerAccessibleInterface(child)); }
    void clear();

    [[nodiscard]] int count() const { return static_cast<int>(m_ids.size()); }
    /// None when there is no such child.
    [[nodiscard]] QAccessibleInterface* at(int index) const;
    /// Counted from 0; -1 for what is no child.
    [[nodiscard]] int indexOf(const QAccessibleInterface* child) const;
    /// The child at a place of the screen, if any.
    [[nodiscard]] QAccessibleInterface* under(QPoint place) const;

private:
    std::vector<QAccessible::Id> m_ids;
};
