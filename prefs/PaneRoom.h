#pragma once

#include <QList>
#include <QSize>

class QWidget;

/// The size of the preferences window's content: the usual one, or more where large texts need it, so that the panes
/// need not be scrolled. At least as wide as the toolbar, and at most what the screen has room for. Points.
[[nodiscard]] QSize paneRoom(const QList<QWidget*>& paneViews, int toolbarWidth, QSize atMost);
