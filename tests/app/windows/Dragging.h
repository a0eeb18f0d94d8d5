#pragma once

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

/// A file that is dragged.
class DraggedFile final : public QMimeData
{
public:
    explicit DraggedFile(const QString& path) { setUrls({QUrl::fromLocalFile(path)}); }
};

/// Drags data over a window. Whether the window accepts them.
inline bool acceptsDrag(QWidget& window, const QMimeData& data)
{
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QCoreApplication::sendEvent(&window, &enter);
    return enter.isAccepted();
}

inline void drop(QWidget& window, const QMimeData& data)
{
    QDropEvent event(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &event);
}
