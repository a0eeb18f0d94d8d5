#pragma once

#include <QByteArray>
#include <QFont>
#include <QString>

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

/// The specimen card's page as a PDF, drawn by hand with QPdfWriter alone: the same texts, boxes and logo in the same
/// fonts, every place written out, nothing computed that need not be. The floor that the program is measured against.
[[nodiscard]] QByteArray barePdf(const BareFonts& fonts, QSvgRenderer& logo);
