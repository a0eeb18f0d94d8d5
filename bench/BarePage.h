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

/// Hands the folder's regular face, the only one on the page, to Qt.
[[nodiscard]] BareFonts loadBareFonts(const QString& folder);

/// Draws the specimen card's page through a painter whose unit is a sixteenth of a point.
void drawBarePage(QPainter& painter, const BareFonts& fonts, QSvgRenderer& logo);

/// The specimen card's page as a PDF, drawn by hand with QPdfWriter alone: the same texts, boxes and logo in the same
/// fonts, every place written out, nothing computed that need not be. The floor that the program is measured against.
[[nodiscard]] QByteArray barePdf(const BareFonts& fonts, QSvgRenderer& logo);
