#include "support/views/ArrowKeys.h"

#include <QKeyEvent>
#include <QWidget>

#include <cstdlib>
#include <limits>

namespace {

QPoint centreOf(const QWidget& widget)
{
    return widget.mapTo(widget.window(), widget.rect().center());
}

// How far the way leads in the key's direction, and how far it leads aside.
struct Way
{
    int ahead = 0;
    int aside = 0;
};

Way wayOf(QPoint distance, int key)
{
    switch (key) {
    case Qt::Key_Left:
        return {-distance.x(), std::abs(distance.y())};
    case Qt::Key_Right:
        return {distance.x(), std::abs(distance.y())};
    case Qt::Key_Up:
        return {-distance.y(), std::abs(distance.x())};
    default:
        return {distance.y(), std::abs(distance.x())};
    }
}

bool isArrow(int key)
{
    return key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Up || key == Qt::Key_Down;
}

} // namespace

ArrowKeys::ArrowKeys(const QList<QWidget*>& widgets)
    : m_widgets(widgets)
{
    for (QWidget* widget : widgets)
        widget->installEventFilter(this);
}

bool ArrowKeys::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return QObject::eventFilter(watched, event);
    const auto& press = static_cast<const QKeyEvent&>(*event);
    const auto* from = qobject_cast<const QWidget*>(watched);
    if (!from || !isArrow(press.key()) || (press.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier)
        return QObject::eventFilter(watched, event);
    if (QWidget* to = nearest(*from, press.key()))
        to->setFocus(Qt::TabFocusReason);
    return true;
}

QWidget* ArrowKeys::nearest(const QWidget& from, int key) const
{
    // A widget aside is as far as one that is twice as far ahead, so that the focus stays in its column.
    constexpr int asideWeight = 2;
    const bool staysInRow = key == Qt::Key_Left || key == Qt::Key_Right;
    QWidget* best = nullptr;
    int shortest = std::numeric_limits<int>::max();
    for (QWidget* widget : m_widgets) {
        const Way way = wayOf(centreOf(*widget) - centreOf(from), key);
        if (way.ahead <= 0 || (staysInRow && way.aside > from.height() / 2) || !widget->isEnabled() ||
            !widget->isVisible())
            continue;
        if (const int length = way.ahead + asideWeight * way.aside; length < shortest) {
            shortest = length;
            best = widget;
        }
    }
    return best;
}
