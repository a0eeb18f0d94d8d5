#include "BarePage.h"

#include <QBuffer>
#include <QFontDatabase>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgRenderer>

#include <array>

using namespace Qt::StringLiterals;

namespace {

// Font sizes are whole numbers of units: sixteen units a point keep the letters evenly spaced.
constexpr int unit = 16;

// Positions are given in points and stored in units.
struct Text
{
    Text(double x, double baseline, const QString& shown)
        : place(x * unit, baseline * unit)
        , text(shown)
    {
    }

    QPointF place; // left end of the baseline
    QString text;
};

constexpr QRectF box(double x, double y, double width, double height)
{
    return {x * unit, y * unit, width * unit, height * unit};
}

QLineF rule(double x, double top, double bottom)
{
    return {x * unit, top * unit, x * unit, bottom * unit};
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
        painter.drawText(text.place, text.text);
}

void drawBoxes(QPainter& painter)
{
    static constexpr std::array boxes{
        box(8.5, 230.5, 579, 50),
        box(8.5, 305.5, 579, 50),
        box(8.5, 280.5, 579, 25),
        box(8.5, 355.5, 579, 120),
    };
    static const std::array rules{
        rule(218.5, 230.5, 280.5), rule(293.5, 230.5, 280.5), rule(473.5, 230.5, 280.5), rule(218.5, 280.5, 305.5),
        rule(293.5, 280.5, 305.5), rule(473.5, 280.5, 305.5), rule(473.5, 305.5, 355.5), rule(473.5, 355.5, 475.5),
    };
    painter.setPen(QPen(Qt::black, unit, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        painter.fillRect(boxes[i], i < 2 ? QColor::fromRgbF(0.7F, 0.7F, 0.7F) : QColor(Qt::white));
        painter.drawRect(boxes[i]);
    }
    for (const QLineF& line : rules)
        painter.drawLine(line);
}

void drawLines(QPainter& painter, const QFont& font)
{
    static const std::array lines{
        Text{8, 135.06, u"Non spécifié"_s},
        Text{8, 160.06, u"Numero de l'assuré : 2 85 05 75 116 123 81"_s},
        Text{8, 180.06, u"Nom de l'assuré : SPECIMEN Hélène"_s},
    };
    drawTexts(painter, font, lines);
}

void drawHeaders(QPainter& painter, const QFont& font)
{
    static const std::array headers{
        Text{13.5, 241.85, u"organisme de rattachement sécurité sociale"_s},
        Text{223.5, 241.85, u"code gestion"_s},
        Text{298.5, 241.85, u"n° de sécurité sociale de l'assuré"_s},
        Text{298.5, 252.4, u"(à utiliser pour tous les bénéficiaires"_s},
        Text{298.5, 262.95, u"ci-dessous)"_s},
        Text{478.5, 241.85, u"modulation du ticket"_s},
        Text{478.5, 252.4, u"modérateur"_s},
        Text{13.5, 316.85, u"Bénéficiaire(s)"_s},
        Text{13.5, 327.4, u"nom de famille suivi d'un éventuel nom d'usage"_s},
        Text{298.5, 316.85, u"n° de sécurité sociale du bénéficiaire"_s},
        Text{298.5, 327.4, u"(pour information)"_s},
        Text{478.5, 316.85, u"né(e) le / Rang"_s},
    };
    drawTexts(painter, font, headers);
}

void drawCells(QPainter& painter, const QFont& font)
{
    static const std::array cells{
        Text{13.5, 294.63, u"01 751 8801"_s},
        Text{223.5, 294.63, u"10"_s},
        Text{298.5, 294.63, u"2 85 05 75 116 123 81"_s},
        Text{13.5, 369.63, u"SPECIMEN Hélène"_s},
        Text{349.48, 369.63, u"2 85 05 75 116 123 81"_s},
        Text{490.64, 369.63, u"14/05/1985"_s},
        Text{570.13, 369.63, u"1"_s},
        Text{13.5, 409.63, u"SPECIMEN François"_s},
        Text{349.48, 409.63, u"1 83 11 69 123 456 41"_s},
        Text{490.64, 409.63, u"02/11/1983"_s},
        Text{570.13, 409.63, u"1"_s},
        Text{13.5, 449.63, u"SPECIMEN Zoé"_s},
        Text{349.48, 449.63, u"2 85 05 75 116 123 81"_s},
        Text{490.64, 449.63, u"21/03/2016"_s},
        Text{570.13, 449.63, u"1"_s},
    };
    drawTexts(painter, font, cells);
}

} // namespace

BareFonts loadBareFonts(const QString& folder)
{
    const int regular = QFontDatabase::addApplicationFont(folder + "/PelmoraSans-Regular.ttf"_L1);
    const QString family = QFontDatabase::applicationFontFamilies(regular).value(0);
    return {bareFont(family, 9), bareFont(family, 12), bareFont(family, 13)};
}

void drawBarePage(QPainter& painter, const BareFonts& fonts, QSvgRenderer& logo)
{
    painter.fillRect(box(0, 0, 595, 842), Qt::white);
    logo.render(&painter, box(8, 15.4, 166, 69.2));
    drawBoxes(painter);
    painter.setPen(Qt::black);
    drawLines(painter, fonts.line);
    drawHeaders(painter, fonts.header);
    drawCells(painter, fonts.cell);
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
    drawBarePage(painter, fonts, logo);
    painter.end();
    return document;
}
