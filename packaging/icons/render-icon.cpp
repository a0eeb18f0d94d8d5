// render-icon DRAWING.svg SIDE PICTURE.png: a drawing as a square picture, for desktops that show no drawings.
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char** argv)
{
    constexpr int usage = 2;
    if (argc != 4)
        return usage;
    QSvgRenderer drawing(QString::fromLocal8Bit(argv[1]));
    const int side = QByteArray(argv[2]).toInt();
    if (!drawing.isValid() || side <= 0)
        return usage;

    QImage picture(side, side, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawing.render(&painter);
    painter.end();
    if (picture.save(QString::fromLocal8Bit(argv[3]), "PNG"))
        return 0;
    std::perror(argv[3]);
    return 1;
}
