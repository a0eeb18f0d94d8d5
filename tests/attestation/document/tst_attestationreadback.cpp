#include "attestation/document/AttestationPdf.h"
#include "tests/attestation/document/Tools.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QGuiApplication>
#include <QRawFont>
#include <QTest>
#include <QXmlStreamReader>

#include <algorithm>

using namespace Qt::StringLiterals;

// The finished document as other programs read it: its texts and ink at their places on paper. Every
// figure is in points and independent of the program's constants.
namespace {

constexpr double tolerance = 0.5;

enum class Edge
{
    Left,
    Right,
    Centre
};

struct ExpectedText
{
    QString text;
    double x; // of the edge
    double top;
    double size;
    Edge edge = Edge::Left;
    bool bold = false;
};

// Height of a line of the page's font.
double lineHeight(double size)
{
    return size * 2400 / 2048;
}

// Width of a text, from the widths that the font file itself gives.
double widthOf(const QString& text, double size, bool bold)
{
    const QString style = bold ? u"Bold"_s : u"Regular"_s;
    QRawFont font(QStringLiteral(PELMORA_STAGE_SHARE "/PelmoraSans-%1.ttf").arg(style), 2048, QFont::PreferNoHinting);
    double width = 0;
    for (const QPointF& advance : font.advancesForGlyphIndexes(font.glyphIndexesForString(text)))
        width += advance.x();
    return width * size / 2048;
}

QList<ExpectedText> expectedHeader(bool hasTitle)
{
    QList<ExpectedText> texts{
        {u"CPAM de Paris"_s, 8, 123, 13},
        {u"Numero de l'assuré : 2 69 06 2B 123 456 34"_s, 8, 148, 13},
        {u"Nom de l'assuré : SPECIMEN Marie"_s, 8, 168, 13},
    };
    if (hasTitle)
        texts.append({u"Attestation de droits à l'assurance maladie"_s, 8, 203, 20, Edge::Left, true});
    return texts;
}

QList<ExpectedText> expectedTables()
{
    const double second = lineHeight(9);
    return {
        {u"organisme de rattachement sécurité sociale"_s, 13.5, 233.5, 9},
        {u"code gestion"_s, 223.5, 233.5, 9},
        {u"n° de sécurité sociale de l'assuré"_s, 298.5, 233.5, 9},
        {u"(à utiliser pour tous les bénéficiaires"_s, 298.5, 233.5 + second, 9},
        {u"ci-dessous)"_s, 298.5, 233.5 + 2 * second, 9},
        {u"modulation du ticket"_s, 478.5, 233.5, 9},
        {u"modérateur"_s, 478.5, 233.5 + second, 9},
        {u"01 751 8801"_s, 13.5, 283.5, 12},
        {u"10"_s, 223.5, 283.5, 12},
        {u"2 69 06 2B 123 456 34"_s, 298.5, 283.5, 12},
        {u"Bénéficiaire(s)"_s, 13.5, 308.5, 9},
        {u"nom de famille suivi d'un éventuel nom d'usage"_s, 13.5, 308.5 + second, 9},
        {u"n° de sécurité sociale du bénéficiaire"_s, 298.5, 308.5, 9},
        {u"(pour information)"_s, 298.5, 308.5 + second, 9},
        {u"né(e) le / Rang"_s, 478.5, 308.5, 9},
    };
}

double rowHeight(int count)
{
    return count <= 11 ? 40.0 : 479.0 / count;
}

QList<ExpectedText> expectedRows(int count)
{
    QList<ExpectedText> texts;
    for (int i = 0; i < count; ++i) {
        const double top = 358.5 + i * rowHeight(count);
        if (top + 12 * 1900.0 / 2048 > 842)
            break; // its letters are below the page
        texts.append({u"SPECIMEN Numéro%1"_s.arg(i + 1), 13.5, top, 12});
        texts.append({u"1 85 05 78 006 084 91"_s, 468.5, top, 12, Edge::Right});
        texts.append({u"15/03/1980"_s, 554.5, top, 12, Edge::Right});
        texts.append({u"1"_s, 573.5, top, 12, Edge::Centre});
    }
    return texts;
}

QRectF expectedBox(const ExpectedText& text)
{
    const double width = widthOf(text.text, text.size, text.bold);
    const double shift = text.edge == Edge::Left ? 0 : text.edge == Edge::Right ? width : width / 2;
    return {text.x - shift, text.top, width, lineHeight(text.size)};
}

bool isClose(double left, double right)
{
    return qAbs(left - right) <= tolerance;
}

QString described(const QString& text, const QRectF& box)
{
    return u"%1 at %2 %3 to %4 %5"_s.arg(text).arg(box.left()).arg(box.top()).arg(box.right()).arg(box.bottom());
}

// The difference between the words from an index on and a text; empty when they agree.
QString difference(const QList<PageWord>& words, qsizetype from, const ExpectedText& expected)
{
    const QStringList texts = expected.text.split(u' ');
    if (from + texts.size() > words.size())
        return u"no more words for "_s + expected.text;
    QRectF found;
    QStringList foundTexts;
    for (const PageWord& word : words.sliced(from, texts.size())) {
        found |= word.box;
        foundTexts.append(word.text);
    }
    const QRectF box = expectedBox(expected);
    const bool inPlace = isClose(found.left(), box.left()) && isClose(found.right(), box.right()) &&
                         isClose(found.top(), box.top()) && isClose(found.bottom(), box.bottom());
    if (foundTexts == texts && inPlace)
        return {};
    return described(foundTexts.join(u' '), found) + u" instead of "_s + described(expected.text, box);
}

// The document's page at two pixels per point. Counts the pixels that do not have an expected colour.
class Picture
{
public:
    explicit Picture(const QByteArray& document)
        : m_image(pixelsOf(document, pixelsPerPoint))
    {
    }

    [[nodiscard]] QSize size() const { return m_image.size(); }

    // The grey level at a place on paper.
    [[nodiscard]] int at(double x, double y) const
    {
        return qGray(m_image.pixel(int(x * pixelsPerPoint), int(y * pixelsPerPoint)));
    }

    // The header's grey, 0.7 of white, is between two grey levels.
    [[nodiscard]] bool isGray(double x, double y, int gray) const { return qAbs(at(x, y) - gray) <= 1; }

    // Whether there is a black line one point wide between two places, and none beside it.
    [[nodiscard]] bool hasRule(QPointF from, QPointF to) const
    {
        const bool vertical = from.x() == to.x();
        const QPointF step = vertical ? QPointF(0, 1) : QPointF(1, 0);
        const QPointF aside = vertical ? QPointF(1, 0) : QPointF(0, 1);
        const double length = vertical ? to.y() - from.y() : to.x() - from.x();
        int besides = 0;
        for (double along = 1.5; along < length - 1; along += 1) {
            const QPointF place = from + along * step;
            for (const double across : {-0.25, 0.25}) {
                if (at(place + across * aside) != 0)
                    return false;
            }
            for (const double across : {-1.25, 1.25})
                besides += at(place + across * aside) == 0 ? 1 : 0;
        }
        // Other rules may meet this one.
        return besides <= 12;
    }

    [[nodiscard]] bool hasOutline(const QRectF& rect) const
    {
        return hasRule(rect.topLeft(), rect.topRight()) && hasRule(rect.bottomLeft(), rect.bottomRight()) &&
               hasRule(rect.topLeft(), rect.bottomLeft()) && hasRule(rect.topRight(), rect.bottomRight());
    }

    // The number of pixels of another grey on the inner edge of a rectangle, one point inside its outline.
    [[nodiscard]] int pixelsNotFilled(const QRectF& rect, int gray) const
    {
        const QRectF inner = rect.adjusted(1.25, 1.25, -1.25, -1.25);
        int others = 0;
        for (double x = inner.left(); x < inner.right(); x += 0.5)
            others += (isGray(x, inner.top(), gray) ? 0 : 1) + (isGray(x, inner.bottom(), gray) ? 0 : 1);
        for (double y = inner.top(); y < inner.bottom(); y += 0.5)
            others += (isGray(inner.left(), y, gray) ? 0 : 1) + (isGray(inner.right(), y, gray) ? 0 : 1);
        return others;
    }

    // Whether a part of the page is completely white.
    [[nodiscard]] bool isBlank(const QRectF& rect) const
    {
        for (double y = rect.top(); y < rect.bottom(); y += 0.5) {
            for (double x = rect.left(); x < rect.right(); x += 0.5) {
                if (at(x, y) != 255)
                    return false;
            }
        }
        return true;
    }

private:
    [[nodiscard]] int at(QPointF place) const { return at(place.x(), place.y()); }

    static constexpr int pixelsPerPoint = 2;
    QImage m_image;
};

constexpr int headerGray = 179;
constexpr int white = 255;
// A rule inside a rectangle crosses its inner edge twice, two pixels wide.
constexpr int pixelsOfRule = 4;

} // namespace

class tst_AttestationReadback : public TestCase
{
    Q_OBJECT

private:
    PageFonts m_fonts = pageFonts();

    QByteArray documentOf(int count, bool hasTitle, QSize logoSize = {400, 200})
    {
        AttestationPage page = specimenPage(count);
        page.showRightLabel = hasTitle;
        page.logo = blackLogo(logoSize);
        return renderAttestationPdf(page, m_fonts).value();
    }

    // With more than 20 rows, letters cover the rules.
    static void addPages(const QList<int>& counts = {0, 1, 3, 11, 12, 20})
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("hasTitle");
        for (const int count : counts) {
            for (const bool hasTitle : {false, true})
                QTest::addRow("%d beneficiaries, %s title", count, hasTitle ? "with" : "without") << count << hasTitle;
        }
    }

private Q_SLOTS:
    void everyTextIsAtItsPlace_data() { addPages({0, 1, 3, 11, 12, 20, 99}); }
    void everyTextIsAtItsPlace()
    {
        QFETCH(int, count);
        QFETCH(bool, hasTitle);
        const QList<PageWord> words = wordsOf(documentOf(count, hasTitle));
        qsizetype next = 0;
        for (const ExpectedText& text : expectedHeader(hasTitle) + expectedTables() + expectedRows(count)) {
            const QString found = difference(words, next, text);
            QVERIFY2(found.isEmpty(), qPrintable(found));
            next += text.text.split(u' ').size();
        }
        QCOMPARE(words.size(), next);
    }

    void everyRuleIsAtItsPlace_data() { addPages(); }
    void everyRuleIsAtItsPlace()
    {
        QFETCH(int, count);
        QFETCH(bool, hasTitle);
        const Picture picture(documentOf(count, hasTitle));
        QCOMPARE(picture.size(), QSize(1190, 1684));
        QVERIFY(picture.hasOutline({8.5, 230.5, 579, 50}));
        QVERIFY(picture.hasOutline({8.5, 280.5, 579, 25}));
        QVERIFY(picture.hasOutline({8.5, 305.5, 579, 50}));
        for (const double x : {218.5, 293.5, 473.5})
            QVERIFY(picture.hasRule({x, 230.5}, {x, 305.5}));
        QVERIFY(picture.hasRule({473.5, 305.5}, {473.5, 355.5}));

        const double bottom = 355.5 + count * rowHeight(count);
        if (count > 0) {
            QVERIFY(picture.hasOutline({8.5, 355.5, 579, bottom - 355.5}));
            QVERIFY(picture.hasRule({473.5, 355.5}, {473.5, bottom}));
        }
        // There are no rules between name and number, between date and rank, between rows, and around the page.
        for (const double x : {218.5, 293.5, 559.5}) {
            QVERIFY(picture.isGray(x, 350, headerGray));
            if (count > 0)
                QCOMPARE(picture.at(x, bottom - 2), white);
        }
        for (int row = 1; row < count; ++row)
            QVERIFY(picture.isBlank({300, 355.5 + row * rowHeight(count) - 0.5, 40, 1}));
        for (const QPointF corner : {QPointF(0, 0), QPointF(594.5, 0), QPointF(0, 841.5), QPointF(594.5, 841.5)})
            QCOMPARE(picture.at(corner.x(), corner.y()), white);
        QVERIFY(picture.isBlank({0, 0, 7.5, 842}));
        QVERIFY(picture.isBlank({588.5, 0, 6, 842}));
        QVERIFY(picture.isBlank({0, bottom + 1, 595, 841 - bottom}));
    }

    void everyFillIsAtItsPlace_data() { addPages(); }
    void everyFillIsAtItsPlace()
    {
        QFETCH(int, count);
        QFETCH(bool, hasTitle);
        const Picture picture(documentOf(count, hasTitle));
        QCOMPARE(picture.pixelsNotFilled({8.5, 230.5, 579, 50}, headerGray), 3 * pixelsOfRule);
        QCOMPARE(picture.pixelsNotFilled({8.5, 280.5, 579, 25}, white), 3 * pixelsOfRule);
        QCOMPARE(picture.pixelsNotFilled({8.5, 305.5, 579, 50}, headerGray), pixelsOfRule);
        if (count > 0) {
            const QRectF rows(8.5, 355.5, 579, count * rowHeight(count));
            QCOMPARE(picture.pixelsNotFilled(rows, white), pixelsOfRule);
        }
        // The fourth cell of the organism table.
        QVERIFY(picture.isBlank({474.5, 281.5, 112, 23}));
        // The title's line is blank without the title.
        QCOMPARE(picture.isBlank({0, 186, 595, 43}), !hasTitle);
    }

    // Reads the lines from the document's operators, because letters cover the rules.
    void theRulesOfNinetyNineRowsAreAtTheirPlaces()
    {
        const DocumentFile file(documentOf(99, false));
        const QByteArray trace = toolOutput(u"mutool"_s, {u"trace"_s, file.path()});
        QXmlStreamReader reader(trace);
        QList<QRectF> strokes;
        while (!reader.atEnd()) {
            if (reader.readNext() != QXmlStreamReader::StartElement || reader.name() != "stroke_path"_L1)
                continue;
            QRectF box;
            while (reader.readNextStartElement()) {
                const QPointF point(reader.attributes().value("x"_L1).toDouble(),
                                    842 - reader.attributes().value("y"_L1).toDouble());
                if (reader.name() != "closepath"_L1)
                    box = box.isNull() ? QRectF(point, QSizeF(1e-9, 1e-9)) : box.united({point, QSizeF(1e-9, 1e-9)});
                reader.skipCurrentElement();
            }
            strokes.append(box);
        }
        const auto has = [&strokes](const QRectF& wanted) {
            return std::ranges::any_of(strokes, [&wanted](const QRectF& box) {
                return isClose(box.left(), wanted.left()) && isClose(box.right(), wanted.right()) &&
                       isClose(box.top(), wanted.top()) && isClose(box.bottom(), wanted.bottom());
            });
        };
        QVERIFY(has({8.5, 355.5, 579, 479}));
        QVERIFY(has({473.5, 355.5, 0, 479}));
        QCOMPARE(strokes.size(), 12);
    }

    void theLogoIsAtItsPlace_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QRectF>("box");
        QTest::newRow("wide: as wide as its box") << QSize(400, 200) << QRectF(8, 8.5, 166, 83);
        QTest::newRow("high: as high as its box") << QSize(100, 200) << QRectF(8, 0, 50, 100);
    }
    void theLogoIsAtItsPlace()
    {
        QFETCH(QSize, size);
        QFETCH(QRectF, box);
        const Picture picture(documentOf(1, false, size));
        const QRectF inner = box.adjusted(0.5, 0.5, -0.5, -0.5);
        for (const QPointF corner : {inner.topLeft(), inner.topRight(), inner.bottomLeft(), inner.bottomRight()})
            QCOMPARE(picture.at(corner.x(), corner.y()), 0);
        constexpr double textTop = 122;
        QVERIFY(picture.isBlank({0, 0, 595, box.top() - 0.5}));
        QVERIFY(picture.isBlank({0, 0, box.left() - 0.5, textTop}));
        QVERIFY(picture.isBlank({box.right() + 0.5, 0, 594 - box.right(), textTop}));
        QVERIFY(picture.isBlank({0, box.bottom() + 0.5, 595, textTop - box.bottom() - 0.5}));
    }
};

template class RunnableTests<tst_AttestationReadback, QGuiApplication>;
#include "tst_attestationreadback.moc"
