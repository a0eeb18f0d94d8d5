#include "attestation/document/AttestationPdf.h"
#include "attestation/page/AttestationLayout.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/viewer/PagePainter.h"
#include "tests/attestation/document/Tools.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

// The ink at that many pixels per point, on a page of 100 x 100 points.
QImage painted(const PageInk& ink, int pixelsPerPoint = 1)
{
    QImage image(100 * pixelsPerPoint, 100 * pixelsPerPoint, QImage::Format_RGB32);
    image.fill(Qt::red);
    QPainter painter(&image);
    painter.scale(pixelsPerPoint, pixelsPerPoint);
    PagePainter().paint(painter, ink);
    return image;
}

// The rectangle of the ink in a white image.
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

// The largest difference between the average greys of squares five points wide, at two pixels per point.
int largestDifference(const QImage& left, const QImage& right)
{
    constexpr int side = 10;
    int largest = 0;
    for (int top = 0; top + side <= left.height(); top += side) {
        for (int start = 0; start + side <= left.width(); start += side) {
            int sum = 0;
            for (int i = 0; i < side * side; ++i) {
                const QPoint pixel(start + i % side, top + i / side);
                sum += qGray(left.pixel(pixel)) - qGray(right.pixel(pixel));
            }
            largest = std::max(largest, std::abs(sum) / (side * side));
        }
    }
    return largest;
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
        const QImage image = painted({InkFill{.rect = {10, 20, 30, 40}, .color = InkColor(ink)}});
        QCOMPARE(image.pixelColor(10, 20), color);
        QCOMPARE(image.pixelColor(39, 59), color);
        QCOMPARE(image.pixelColor(9, 20), QColor(Qt::red));
        QCOMPARE(image.pixelColor(40, 59), QColor(Qt::red));
    }

    void aStrokeIsOnePointWideOnItsEdge()
    {
        const QImage image = painted({whitePage, InkStroke{.rect = {10.5, 20.5, 30, 40}}}, 2);
        QCOMPARE(inkBounds(image), QRect(20, 40, 62, 82));
        QCOMPARE(image.pixelColor(20, 40), QColor(Qt::black));
        QCOMPARE(image.pixelColor(21, 60), QColor(Qt::black));
        QCOMPARE(image.pixelColor(22, 60), QColor(Qt::white));
    }

    void aRuleIsOnePointWideWithoutCaps()
    {
        const QImage image = painted({whitePage, InkRule{.from = {30.5, 10}, .to = {30.5, 50}}}, 2);
        QCOMPARE(inkBounds(image), QRect(60, 20, 2, 80));
    }

    void aTextIsPaintedBelowTheTopOfItsLine()
    {
        const PageFonts fonts = pageFonts();
        const InkText text{.position = {10, 20}, .text = u"H"_s, .font = fonts.systemFontOfSize(12), .place = {}};
        const QRect bounds = inkBounds(painted({whitePage, text}, 10));
        // A capital is on the baseline, and its height is 0.711 of the size.
        const double baseline = 20 + text.font.ascent;
        QVERIFY(qAbs(bounds.bottom() + 1 - baseline * 10) <= 1.5);
        QVERIFY(qAbs(bounds.height() - 0.711 * 12 * 10) <= 2);
        QVERIFY(bounds.left() >= 100 && bounds.left() < 115);
    }

    void anImageFillsItsRectangle()
    {
        const QImage image = painted({whitePage, InkImage{.rect = {10, 20, 30, 15}, .logo = blackLogo({400, 200})}});
        QCOMPARE(inkBounds(image), QRect(10, 20, 30, 15));
    }

    void inkIsPaintedInItsOrder()
    {
        const PageInk ink{InkFill{.rect = {0, 0, 50, 50}, .color = InkColor::Black},
                          InkFill{.rect = {0, 0, 50, 50}, .color = InkColor::White}};
        QCOMPARE(painted(ink).pixelColor(25, 25), QColor(Qt::white));
    }

    // Pelmora paints the ink on the screen, other programs paint the document. Each smooths letters differently.
    void screenPaperAndFileAgree_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("tolerance");
        for (const int count : {0, 3, 12})
            QTest::newRow(qPrintable(QString::number(count))) << count << u"SPECIMEN Zoé אברהם محمد"_s << 20;
        // Programs that show documents draw these outlines darker.
        QTest::newRow("PostScript outlines") << 1 << u"SPECIMEN ไทย 丁七"_s << 30;
    }
    void screenPaperAndFileAgree()
    {
        QFETCH(const int, count);
        QFETCH(const QString, name);
        QFETCH(const int, tolerance);
        constexpr int pixelsPerPoint = 2;
        const PageFonts fonts = pageFonts();
        SchemeLogos logos(stagedBundle());
        AttestationPage page = specimenPage(count);
        page.logo = logos.logoNamed(u"01"_s);
        page.showRightLabel = true;
        page.insuredName = name;

        PageInk ink = AttestationLayout::drawRect(page, attestationPageSize, fonts);
        std::erase_if(ink, [](const InkItem& item) {
            const auto* stroke = std::get_if<InkStroke>(&item);
            return stroke != nullptr && stroke->onScreenOnly;
        });
        QImage screen((attestationPageSize * pixelsPerPoint).toSize(), QImage::Format_RGB32);
        screen.fill(Qt::white);
        QPainter painter(&screen);
        painter.scale(pixelsPerPoint, pixelsPerPoint);
        PagePainter().paint(painter, ink);
        painter.end();

        const QByteArray document = renderAttestationPdf(page, fonts).value();
        for (const QImage& drawn : {pixelsOf(document, pixelsPerPoint), pixelsOfMuPdf(document, pixelsPerPoint)}) {
            QCOMPARE(drawn.size(), screen.size());
            QVERIFY2(largestDifference(screen, drawn) <= tolerance,
                     qPrintable(QString::number(largestDifference(screen, drawn))));
        }
    }

    // Screen, paper and file differ only in their resolution.
    void aPageIsTheSameAtEveryResolution()
    {
        const PageFonts fonts = pageFonts();
        AttestationPage page;
        page.fundName = u"CPAM de Paris"_s;
        page.inset = QMarginsF(0, -90, 0, 10);
        const PageInk ink = AttestationLayout::drawRect(page, {100, 100}, fonts);
        const QRect fine = inkBounds(painted(ink, 20));
        const QRect coarse = inkBounds(painted(ink, 4));
        QVERIFY(!fine.isEmpty());
        QVERIFY(qAbs(fine.left() / 20.0 - coarse.left() / 4.0) <= 0.5);
        QVERIFY(qAbs(fine.right() / 20.0 - coarse.right() / 4.0) <= 0.5);
        QVERIFY(qAbs(fine.top() / 20.0 - coarse.top() / 4.0) <= 0.5);
        QVERIFY(qAbs(fine.bottom() / 20.0 - coarse.bottom() / 4.0) <= 0.5);
    }
};

template class RunnableTests<tst_PagePainter, QApplication>;
#include "tst_pagepainter.moc"
