#pragma once

#include <QByteArray>
#include <QFont>
#include <QString>

class QPainter;
class QSvgRenderer;

/// The fonts of the bare page, made once as a program would.
struct BareFonts
{
    QFont header;
    QFont cell;
    QFont line;
};

/// Registers the folder's regular font, the only one on the page, with Qt.
[[nodiscard]] BareFonts loadBareFonts(const QString& folder);

/// Draws the specimen card's page through a painter whose unit is a sixteenth of a point.
void drawBarePage(QPainter& painter, const BareFonts& fonts, QSvgRenderer& logo);

/// The specimen card's page as a PDF, drawn with QPdfWriter alone: the same texts, boxes and logo in the same fonts, at
/// constant positions, with as little computation as possible. The lower bound that the program is compared with.
[[nodiscard]] QByteArray barePdf(const BareFonts& fonts, QSvgRenderer& logo);
