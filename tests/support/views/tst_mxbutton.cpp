#include "support/views/MXButton.h"
#include "support/views/ReadableInk.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/support/views/PaintRecord.h"

#include <QApplication>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr QRect bounds(10, 20, 160, 120);
const QColor green(0, 162, 1);

std::unique_ptr<MXButton> tile(std::optional<QColor> colour)
{
    auto button = std::make_unique<MXButton>();
    QPixmap image(64, 64);
    image.fill(Qt::red);
    button->setIcon(QIcon(image));
    button->setIconSize({40, 40});
    button->setText(u"Lire"_s);
    button->setBackgroundColor(colour);
    button->resize(160, 120);
    return button;
}

QImage drawn(MXButton& button, const QColor& behind)
{
    QImage image(button.size(), QImage::Format_RGB32);
    image.fill(behind);
    QPainter painter(&image);
    button.cell().drawWithFrame(button.rect(), button, painter);
    return image;
}

// Whether all pixels along the edges have this colour.
bool edgesAre(const QImage& image, const QColor& colour)
{
    for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, 0) != colour || image.pixelColor(x, image.height() - 1) != colour)
            return false;
    }
    for (int y = 0; y < image.height(); ++y) {
        if (image.pixelColor(0, y) != colour || image.pixelColor(image.width() - 1, y) != colour)
            return false;
    }
    return true;
}

int differingPixels(const QImage& one, const QImage& other)
{
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            count += one.pixel(x, y) != other.pixel(x, y) ? 1 : 0;
    }
    return count;
}

} // namespace

class tst_MXButton : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theImageIsEightPointsBelowItsDefaultPlace()
    {
        const auto button = tile(green);
        const QRect platforms = ButtonCell().imageRectForBounds(bounds, *button);
        QCOMPARE(button->cell().imageRectForBounds(bounds, *button), platforms.translated(0, 8));
    }

    void theImageIsCentredAboveTheTitle()
    {
        const auto button = tile(green);
        const QRect image = button->cell().imageRectForBounds(bounds, *button);
        const QRect title = button->cell().titleRectForBounds(bounds, *button);
        QVERIFY(bounds.contains(image));
        QVERIFY(bounds.contains(title));
        QVERIFY(image.bottom() < title.top());
        QVERIFY(std::abs(image.center().x() - bounds.center().x()) <= 1);
        // The margins above the image and below the title are equal.
        QVERIFY(std::abs((image.top() - bounds.top()) - (bounds.bottom() - title.bottom())) <= 1);
    }

    void theImageGrowsWithTheTileUpToTwiceItsSize_data()
    {
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("side");
        QTest::newRow("small") << 90 << 40;
        QTest::newRow("larger") << 120 << 48;
        QTest::newRow("as large as it gets") << 200 << 80;
        QTest::newRow("larger than that") << 400 << 80;
    }

    void theImageGrowsWithTheTileUpToTwiceItsSize()
    {
        QFETCH(const int, height);
        QFETCH(const int, side);
        const auto button = tile(green);
        QCOMPARE(button->cell().imageRectForBounds({0, 0, 400, height}, *button).size(), QSize(side, side));
    }

    void theTileIsFilledToItsCorners()
    {
        const auto button = tile(green);
        QVERIFY(edgesAre(drawn(*button, Qt::magenta), green));
    }

    void theColourIsTheSameInEveryState()
    {
        const auto button = tile(green);
        button->setDown(true);
        QVERIFY(edgesAre(drawn(*button, Qt::magenta), green));
        button->setDown(false);
        button->setEnabled(false);
        QVERIFY(edgesAre(drawn(*button, Qt::magenta), green));
    }

    void withoutAColourThereIsNoBezel()
    {
        const auto button = tile(std::nullopt);
        QVERIFY(edgesAre(drawn(*button, Qt::magenta), Qt::magenta));
        QImage bezel(button->size(), QImage::Format_RGB32);
        bezel.fill(Qt::magenta);
        const QImage before = bezel;
        QPainter painter(&bezel);
        button->cell().drawBezelWithFrame(button->rect(), *button, painter);
        painter.end();
        QCOMPARE(bezel, before);
    }

    void eachStateLooksDifferent()
    {
        const auto button = tile(green);
        const QImage plain = drawn(*button, Qt::magenta);
        button->setDown(true);
        QVERIFY(differingPixels(plain, drawn(*button, Qt::magenta)) > 20);
        button->setDown(false);
        button->setEnabled(false);
        QVERIFY(differingPixels(plain, drawn(*button, Qt::magenta)) > 20);
    }

    void theKeyboardFocusIsVisible()
    {
        QWidget window;
        auto* first = tile(green).release();
        auto* second = tile(green).release();
        first->setParent(&window);
        second->setParent(&window);
        second->move(0, 130);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        first->setFocus();
        const QImage unfocused = drawn(*second, Qt::magenta);
        // Before the Tab key is pressed, the focus of the first button is not shown.
        QCOMPARE(drawn(*first, Qt::magenta), unfocused);
        QTest::keyClick(first, Qt::Key_Tab);
        QVERIFY(second->hasFocus());
        const QImage focused = drawn(*second, Qt::magenta);
        QVERIFY(differingPixels(unfocused, focused) > 400);
        QCOMPARE(drawn(*first, Qt::magenta), unfocused);
        // The focus frame is inside the tile, in the ink's colour.
        QVERIFY(edgesAre(focused, green));
        QCOMPARE(focused.pixelColor(80, 4), second->cell().inkColor(*second));
    }

    void settingTheColourRedraws()
    {
        const auto button = tile(green);
        button->show();
        QVERIFY(QTest::qWaitForWindowExposed(button.get()));
        const PaintRecord record(*button);
        button->setBackgroundColor(QColor(Qt::blue));
        QTRY_COMPARE(record.painted(), QList<QRect>{button->rect()});
        QCOMPARE(button->grab().toImage().pixelColor(1, 1), QColor(Qt::blue));
    }

    void imageAndTitleFitIntoTheSmallestTile()
    {
        const auto button = tile(green);
        const QRect smallest(QPoint(), button->minimumSizeHint());
        QVERIFY(smallest.contains(button->cell().imageRectForBounds(smallest, *button)));
        QVERIFY(smallest.contains(button->cell().titleRectForBounds(smallest, *button)));
        QVERIFY(button->cell().titleRectForBounds(smallest, *button).width() >=
                button->fontMetrics().horizontalAdvance(button->text()));
    }

    void theInkHasTheBetterContrast_data()
    {
        QTest::addColumn<QColor>("background");
        QTest::addColumn<bool>("white");
        QTest::newRow("green") << QColor(0, 162, 1) << false;
        QTest::newRow("violet") << QColor(146, 39, 221) << true;
        QTest::newRow("red") << QColor(223, 0, 19) << true;
        QTest::newRow("blue") << QColor(0, 160, 211) << false;
        QTest::newRow("orange") << QColor(250, 104, 12) << false;
        QTest::newRow("grey") << QColor(88, 88, 88) << true;
    }

    void theInkHasTheBetterContrast()
    {
        QFETCH(const QColor, background);
        QFETCH(const bool, white);
        QCOMPARE(readableInk(background) == QColor(Qt::white), white);
        QVERIFY(contrastRatio(background, readableInk(background)) >= 4.5);
    }

    void theContrastRatioIsThatOfTheGuidelines()
    {
        QCOMPARE(contrastRatio(Qt::black, Qt::white), 21.0);
        QCOMPARE(contrastRatio(Qt::white, Qt::white), 1.0);
        // The lightest grey with enough contrast to white.
        QVERIFY(std::abs(contrastRatio(QColor(0x76, 0x76, 0x76), Qt::white) - 4.54) < 0.01);
    }

    void spaceAndReturnPressTheButton()
    {
        const auto button = tile(green);
        button->setAutoDefault(true);
        button->show();
        QVERIFY(QTest::qWaitForWindowActive(button.get()));
        button->setFocus();
        const QSignalSpy clicked(button.get(), &QPushButton::clicked);
        QTest::keyClick(button.get(), Qt::Key_Space);
        QTest::keyClick(button.get(), Qt::Key_Return);
        QCOMPARE(clicked.count(), 2);
    }
};

template class RunnableTests<tst_MXButton, QApplication>;
#include "tst_mxbutton.moc"
