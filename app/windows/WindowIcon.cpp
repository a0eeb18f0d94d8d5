#include "app/windows/WindowIcon.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

QIcon windowIconFrom(const QString& path)
{
    QIcon icon;
    QSvgRenderer drawing(path);
    for (const int side : {16, 32, 48, 128}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        drawing.render(&painter);
        icon.addPixmap(pixmap);
    }
    return icon;
}
