#include "Fixtures.h"
#include "attestation/page/AttestationLayout.h"
#include "attestation/page/PagePainter.h"
#include "tests/common/TestCase.h"

#include <QImage>
#include <QPainter>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The ink at so many pixels a point, on a page of 100 x 100 points.
QImage painted(const PageInk& ink, PageMedium medium, int pixelsPerPoint = 1)
{
    QImage image(100 * pixelsPerPoint, 100 * pixelsPerPoint, QImage::Format_RGB32);
    image.fill(Qt::red);
    QPainter painter(&image);
    const double scale = double(pixelsPerPoint) / pageUnitsPerPoint;
    painter.scale(scale, scale);
    PagePainter::paint(painter, ink, medium);
    return image;
}

// Where the ink of a white image lies.
QRect inkBounds(const QImage& image)
{
    QRect bounds;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y).lightness() < 128)
                bounds |= QRect(x, y, 1, 1);
        }
    }
    return bounds;
}

const InkFill whitePage{.rect = {0, 0, 100, 100}, .color = InkColor::White};

} // namespace

class tst_PagePainter : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aFillCoversItsRectangle_data()
    {
        QTest::addColumn<int>("ink");
        QTest::addColumn<QColor>("color");
        QTest::newRow("white") << int(InkColor::White) << QColor(255, 255, 255);
        QTest::newRow("header grey") << int(InkColor::HeaderGray) << QColor(179, 179, 179);
        QTest::newRow("dark grey") << int(InkColor::DarkGray) << QColor(85, 85, 85);
        QTest::newRow("black") << int(InkColor::Black) << QColor(0, 0, 0);
    }
    void aFillCoversItsRectangle()
    {
        QFETCH(int, ink);
        QFETCH(QColor, color);
        const QImage image = painted({InkFill{.rect = {10, 20, 30, 40}, .color = InkColor(ink)}}, PageMedium::Document);
        QCOMPARE(image.pixelColor(10, 20), color);
        QCOMPARE(image.pixelColor(39, 59), color);
        QCOMPARE(image.pixelColor(9, 20), QColor(Qt::red));
        QCOMPARE(image.pixelColor(40, 59), QColor(Qt::red));
    }

    void aStrokeIsOnePointWideOnItsEdge()
    {
        const QImage image = painted({whitePage, InkStroke{.rect = {10.5, 20.5, 30, 40}}}, PageMedium::Document, 2);
        QCOMPARE(inkBounds(image), QRect(20, 40, 62, 82));
        QCOMPARE(image.pixelColor(20, 40), QColor(Qt::black));
        QCOMPARE(image.pixelColor(21, 60), QColor(Qt::black));
        QCOMPARE(image.pixelColor(22, 60), QColor(Qt::white));
    }

    void aRuleIsOnePointWideAndEndsWhereItEnds()
    {
        const QImage image =
            painted({whitePage, InkRule{.from = {30.5, 10}, .to = {30.5, 50}}}, PageMedium::Document, 2);
        QCOMPARE(inkBounds(image), QRect(60, 20, 2, 80));
    }

    void aTextStandsBelowTheTopOfItsLine()
    {
        const PageFonts fonts = pageFonts();
        const InkText text{.position = {10, 20}, .text = u"H"_s, .font = fonts.systemFontOfSize(12)};
        const QRect bounds = inkBounds(painted({whitePage, text}, PageMedium::Document, 10));
        // A capital stands on the baseline and is 0.711 of the size high.
        const double baseline = 20 + text.font.ascent;
        QVERIFY(qAbs(bounds.bottom() + 1 - baseline * 10) <= 1.5);
        QVERIFY(qAbs(bounds.height() - 0.711 * 12 * 10) <= 2);
        QVERIFY(bounds.left() >= 100 && bounds.left() < 115);
    }

    void whatIsForTheScreenAloneIsNotInADocument()
    {
        const PageInk ink{whitePage, InkStroke{.rect = {10.5, 10.5, 50, 50}, .onScreenOnly = true}};
        QVERIFY(inkBounds(painted(ink, PageMedium::Document)).isEmpty());
        QCOMPARE(inkBounds(painted(ink, PageMedium::Screen)), QRect(10, 10, 51, 51));
    }

    void anImageFillsItsRectangle()
    {
        const QImage image = painted({whitePage, InkImage{.rect = {10, 20, 30, 15}, .image = blackLogo({400, 200})}},
                                     PageMedium::Document);
        QCOMPARE(inkBounds(image), QRect(10, 20, 30, 15));
    }

    void inkIsLaidDownInItsOrder()
    {
        const PageInk ink{InkFill{.rect = {0, 0, 50, 50}, .color = InkColor::Black},
                          InkFill{.rect = {0, 0, 50, 50}, .color = InkColor::White}};
        QCOMPARE(painted(ink, PageMedium::Document).pixelColor(25, 25), QColor(Qt::white));
    }

    // Screen, paper and file differ in their resolution only.
    void aPageIsTheSameAtEveryResolution()
    {
        const PageFonts fonts = pageFonts();
        AttestationPage page;
        page.fundName = u"CPAM de Paris"_s;
        page.inset = QMarginsF(0, -90, 0, 10);
        const PageInk ink = AttestationLayout::drawRect(page, {100, 100}, fonts);
        const QRect fine = inkBounds(painted(ink, PageMedium::Document, 20));
        const QRect coarse = inkBounds(painted(ink, PageMedium::Document, 4));
        QVERIFY(!fine.isEmpty());
        QVERIFY(qAbs(fine.left() / 20.0 - coarse.left() / 4.0) <= 0.5);
        QVERIFY(qAbs(fine.right() / 20.0 - coarse.right() / 4.0) <= 0.5);
        QVERIFY(qAbs(fine.top() / 20.0 - coarse.top() / 4.0) <= 0.5);
        QVERIFY(qAbs(fine.bottom() / 20.0 - coarse.bottom() / 4.0) <= 0.5);
    }
};

QTEST_MAIN(tst_PagePainter)
#include "tst_pagepainter.moc"
