#pragma once

#include <QAccessible>
#include <QPoint>

#include <vector>

class QAccessibleInterface;

/// The children of an accessible element. Qt's registry owns them and may delete them first, so they are kept by their
/// numbers. Deleted with this object.
class AccessibleChildren
{
public:
    AccessibleChildren() = default;
    ~AccessibleChildren() { clear(); }
    Q_DISABLE_COPY_MOVE(AccessibleChildren)

    /// Gives a new child to the registry.
    void add(QAccessibleInterface* child) { m_ids.push_back(QAccessible::registerAccessibleInterface(child)); }
    void clear();

    [[nodiscard]] int count() const { return static_cast<int>(m_ids.size()); }
    /// Null when there is no such child.
    [[nodiscard]] QAccessibleInterface* at(int index) const;
    /// The index, or -1.
    [[nodiscard]] int indexOf(const QAccessibleInterface* child) const;
    /// The child at a point of the screen, if any.
    [[nodiscard]] QAccessibleInterface* under(QPoint place) const;

private:
    std::vector<QAccessible::Id> m_ids;
};
