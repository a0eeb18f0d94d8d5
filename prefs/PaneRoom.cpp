#include "prefs/PaneRoom.h"

#include "prefs/PaneContentView.h"

#include <QLayout>
#include <QScrollArea>

#include <algorithm>

namespace {

const QWidget* contentsOf(const QWidget* view)
{
    const auto* area = qobject_cast<const QScrollArea*>(view);
    return area && area->widget() && area->widget()->layout() ? area->widget() : nullptr;
}

} // namespace

QSize paneRoom(const QList<QWidget*>& paneViews, int toolbarWidth, QSize atMost)
{
    QSize room = PaneContentView::paneSize;
    room.setWidth(std::max(room.width(), toolbarWidth));
    for (const QWidget* view : paneViews) {
        if (const QWidget* contents = contentsOf(view))
            room.setWidth(std::max(room.width(), contents->minimumSizeHint().width()));
    }
    room.setWidth(std::min(room.width(), atMost.width()));
    for (const QWidget* view : paneViews) {
        if (const QWidget* contents = contentsOf(view))
            room.setHeight(std::max(room.height(), contents->layout()->totalHeightForWidth(room.width())));
    }
    return room.boundedTo(atMost);
}
