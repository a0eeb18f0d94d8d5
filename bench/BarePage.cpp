#include "BarePage.h"

#include <QBuffer>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgRenderer>

#include <array>

using namespace Qt::StringLiterals;

namespace {

// Fonts come in whole sizes: sixteen units a point keep the letters evenly spaced.
constexpr int unit = 16;

struct Text
{
    double x; // left edge, in points
    double baseline;
    QStringView text;
};

constexpr std::array lines{
    Text{8, 135.06, u"Régime général"},
    Text{8, 160.06, u"Numero de l'assuré : 2 85 05 75 116 123 81"},
    Text{8, 180.06, u"Nom de l'assuré : SPECIMEN Hélène"},
};

constexpr std::array headers{
    Text{13.5, 241.85, u"organisme de rattachement sécurité sociale"},
    Text{223.5, 241.85, u"code gestion"},
    Text{298.5, 241.85, u"n° de sécurité sociale de l'assuré"},
    Text{298.5, 252.4, u"(à utiliser pour tous les bénéficiaires"},
    Text{298.5, 262.95, u"ci-dessous)"},
    Text{478.5, 241.85, u"modulation du ticket"},
    Text{478.5, 252.4, u"modérateur"},
    Text{13.5, 316.85, u"Bénéficiaire(s)"},
    Text{13.5, 327.4, u"nom de famille suivi d'un éventuel nom d'usage"},
    Text{298.5, 316.85, u"n° de sécurité sociale du bénéficiaire"},
    Text{298.5, 327.4, u"(pour information)"},
    Text{478.5, 316.85, u"né(e) le / Rang"},
};

constexpr std::array cells{
    Text{13.5, 294.63, u"01 751 8801"},
    Text{223.5, 294.63, u"10"},
    Text{298.5, 294.63, u"2 85 05 75 116 123 81"},
    Text{13.5, 369.63, u"SPECIMEN Hélène"},
    Text{13.5, 409.63, u"SPECIMEN François"},
    Text{13.5, 449.63, u"SPECIMEN Zoé"},
    Text{570.13, 369.63, u"1"},
    Text{570.13, 409.63, u"1"},
    Text{570.13, 449.63, u"1"},
};

// Their x is that of their right edge.
constexpr std::array rightCells{
    Text{468.5, 369.63, u"2 85 05 75 116 123 81"}, Text{554.5, 369.63, u"14/05/1985"},
    Text{468.5, 409.63, u"1 83 11 69 123 456 41"}, Text{554.5, 409.63, u"02/11/1983"},
    Text{468.5, 449.63, u"2 85 05 75 116 123 81"}, Text{554.5, 449.63, u"21/03/2016"},
};

constexpr std::array boxes{
    QRectF(8.5, 230.5, 579, 50),
    QRectF(8.5, 305.5, 579, 50),
    QRectF(8.5, 280.5, 579, 25),
    QRectF(8.5, 355.5, 579, 120),
};

constexpr std::array rules{
    QLineF(218.5, 230.5, 218.5, 280.5), QLineF(293.5, 230.5, 293.5, 280.5), QLineF(473.5, 230.5, 473.5, 280.5),
    QLineF(218.5, 280.5, 218.5, 305.5), QLineF(293.5, 280.5, 293.5, 305.5), QLineF(473.5, 280.5, 473.5, 305.5),
    QLineF(473.5, 305.5, 473.5, 355.5), QLineF(473.5, 355.5, 473.5, 475.5),
};

QRectF inUnits(const QRectF& rect)
{
    return {rect.topLeft() * unit, rect.size() * unit};
}

QFont bareFont(const QString& family, int size)
{
    QFont font(family);
    font.setPixelSize(size * unit);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setKerning(false);
    font.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::PreferNoShaping));
    return font;
}

template <std::size_t Count>
void drawTexts(QPainter& painter, const QFont& font, const std::array<Text, Count>& texts)
{
    painter.setFont(font);
    for (const Text& text : texts)
        painter.drawText(QPointF(text.x, text.baseline) * unit, text.text.toString());
}

void drawBoxes(QPainter& painter)
{
    painter.setPen(QPen(Qt::black, unit, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        painter.fillRect(inUnits(boxes[i]), i < 2 ? QColor::fromRgbF(0.7F, 0.7F, 0.7F) : QColor(Qt::white));
        painter.drawRect(inUnits(boxes[i]));
    }
    for (const QLineF& rule : rules)
        painter.drawLine(rule.p1() * unit, rule.p2() * unit);
}

void drawPage(QPainter& painter, const BareFonts& fonts, QSvgRenderer& logo)
{
    painter.fillRect(inUnits({0, 0, 595, 842}), Qt::white);
    logo.render(&painter, inUnits({8, 15.4, 166, 69.2}));
    drawBoxes(painter);
    painter.setPen(Qt::black);
    drawTexts(painter, fonts.line, lines);
    drawTexts(painter, fonts.header, headers);
    drawTexts(painter, fonts.cell, cells);
    const QFontMetricsF metrics(fonts.cell);
    for (const Text& text : rightCells) {
        const QString shown = text.text.toString();
        painter.drawText(QPointF(text.x * unit - metrics.horizontalAdvance(shown), text.baseline * unit), shown);
    }
}

} // namespace

BareFonts loadBareFonts(const QString& folder)
{
    const int regular = QFontDatabase::addApplicationFont(folder + "/PelmoraSans-Regular.ttf"_L1);
    QFontDatabase::addApplicationFont(folder + "/PelmoraSans-Bold.ttf"_L1);
    const QString family = QFontDatabase::applicationFontFamilies(regular).value(0);
    return {bareFont(family, 9), bareFont(family, 12), bareFont(family, 13)};
}

QByteArray barePdf(const BareFonts& fonts, QSvgRenderer& logo)
{
    QByteArray document;
    QBuffer buffer(&document);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setPdfVersion(QPagedPaintDevice::PdfVersion_A1b);
    writer.setTitle(u"Attestation de droits à l'assurance maladie"_s);
    writer.setCreator(u"Pelmora"_s);
    writer.setPageLayout({QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF()});
    writer.setResolution(72 * unit);
    QPainter painter(&writer);
    drawPage(painter, fonts, logo);
    painter.end();
    return document;
}
