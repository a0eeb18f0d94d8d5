#include "attestation/page/AttestationLayout.h"
#include "attestation/page/MVNewAttestation.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/viewer/MVNewAttestationView.h"
#include "attestation/viewer/PagePainter.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/EventCount.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The view as shown on a screen with that many pixels per point.
QImage shown(MVNewAttestationView& view, int pixelsPerPoint = 1)
{
    QImage image(view.size() * pixelsPerPoint, QImage::Format_RGB32);
    image.setDevicePixelRatio(pixelsPerPoint);
    image.fill(Qt::red);
    view.render(&image);
    return image;
}

// The average darkness of a part of the image: from 0 (white) to 255.
double darkness(const QImage& image, QRect part)
{
    int sum = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x)
            sum += 255 - image.pixelColor(x, y).lightness();
    }
    return double(sum) / (part.width() * part.height());
}

QPalette darkPalette()
{
    QPalette palette(QColor(30, 30, 30), QColor(20, 20, 20));
    palette.setColor(QPalette::WindowText, Qt::yellow);
    palette.setColor(QPalette::Text, Qt::yellow);
    palette.setColor(QPalette::Base, Qt::blue);
    return palette;
}

} // namespace

class tst_MVNewAttestationView : public TestCase
{
    Q_OBJECT

private:
    TemporarySettings m_settings;
    SchemeLogos m_logos{stagedBundle()};
    PageFonts m_fonts = pageFonts();

private Q_SLOTS:
    void theViewHasThePagesFrame()
    {
        const MVNewAttestation attestation(m_settings.store(), m_logos);
        const auto view = MVNewAttestationView::viewOf(attestation, m_fonts);
        QCOMPARE(view->frameSize(), QSize(595, 842));
        QCOMPARE(view->size(), attestationPageSize.toSize());
        QCOMPARE(view->sizeHint(), QSize(595, 842));
        QVERIFY(view->isFlipped());
        QVERIFY(view->isOpaque());
        QCOMPARE(view->documentSize(), QSizeF(595, 842));
    }

    void theScreenShowsTheBorder()
    {
        const MVNewAttestation attestation(m_settings.store(), m_logos);
        const auto view = MVNewAttestationView::viewOf(attestation, m_fonts);
        // Half of the border's one point lies outside the page: at two pixels a point, one pixel is left.
        const QImage image = shown(*view, 2);
        const QColor darkGray(85, 85, 85);
        QCOMPARE(image.pixelColor(0, 0), darkGray);
        QCOMPARE(image.pixelColor(600, 0), darkGray);
        QCOMPARE(image.pixelColor(0, 900), darkGray);
        QCOMPARE(image.pixelColor(1189, 900), darkGray);
        QCOMPARE(image.pixelColor(600, 1683), darkGray);
        QCOMPARE(image.pixelColor(1, 1), QColor(Qt::white));
        QCOMPARE(image.pixelColor(1188, 1682), QColor(Qt::white));
        QVERIFY(shown(*view).pixelColor(300, 0).lightness() < 200);
        QCOMPARE(shown(*view).pixelColor(300, 1), QColor(Qt::white));
    }

    void aPageWithoutRecordShowsTheEmptyTables()
    {
        const MVNewAttestation attestation(m_settings.store(), m_logos);
        const auto view = MVNewAttestationView::viewOf(attestation, m_fonts);
        const QImage image = shown(*view);
        for (int y = 1; y < 230; ++y) {
            for (int x = 1; x < 594; ++x)
                QCOMPARE(image.pixelColor(x, y), QColor(Qt::white));
        }
        QCOMPARE(image.pixelColor(450, 270), QColor(179, 179, 179));
        QCOMPARE(image.pixelColor(8, 270), QColor(Qt::black));
        QCOMPARE(image.pixelColor(300, 600), QColor(Qt::white));
    }

    void aNewRecordIsShown()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        const auto view = MVNewAttestationView::viewOf(attestation, m_fonts);
        const QImage before = shown(*view);
        attestation.setVitale(specimenCard(2));
        QCOMPARE(view->page().lines.size(), 2);
        QVERIFY(shown(*view) != before);
    }

    void aRecordSetBeforeTheViewIsMadeIsShown()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        attestation.setVitale(specimenCard(3));
        QCOMPARE(MVNewAttestationView::viewOf(attestation, m_fonts)->page().lines.size(), 3);
    }

    // The logo's proportions change without a notification, so only a new layout shows the change.
    void aPageIsLaidOutOnceHoweverOftenItIsPainted()
    {
        const std::shared_ptr<SchemeLogo> logo = blackLogo({400, 200});
        const auto resize = [&logo](QSize size) { logo->image = blackLogo(size)->image; };
        const MVNewAttestation attestation(m_settings.store(), m_logos);
        const auto view = MVNewAttestationView::viewOf(attestation, m_fonts);
        AttestationPage page;
        page.logo = logo;
        view->setPage(page);
        const QColor black(Qt::black);
        QCOMPARE(shown(*view).pixelColor(120, 50), black);
        resize({100, 200});
        QCOMPARE(shown(*view).pixelColor(120, 50), black);
        view->setPlacement(QTransform::fromScale(0.5, 0.5));
        QCOMPARE(shown(*view).pixelColor(60, 25), black);

        // The page is laid out again when its values change.
        view->setPlacement({});
        view->setPage(page);
        QCOMPARE(shown(*view).pixelColor(120, 50), QColor(Qt::white));
        QCOMPARE(shown(*view).pixelColor(30, 50), black);
        resize({400, 200});
        view->setFonts(m_fonts);
        QCOMPARE(shown(*view).pixelColor(120, 50), black);
        resize({100, 200});
        view->setDocumentSize({595, 800});
        QCOMPARE(shown(*view).pixelColor(120, 50), QColor(Qt::white));
    }

    void everyRecordOfASequenceIsShown()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        const auto view = MVNewAttestationView::viewOf(attestation, m_fonts);
        for (const int persons : {3, 1, 500, 2}) {
            attestation.setVitale(specimenCard(persons));
            static_cast<void>(shown(*view));
            MVNewAttestation same(m_settings.store(), m_logos);
            same.setVitale(specimenCard(persons));
            QCOMPARE(shown(*view), shown(*MVNewAttestationView::viewOf(same, m_fonts)));
        }
    }

    void thePageIsPaintedAgainWhenARecordIsSet()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        const auto view = MVNewAttestationView::viewOf(attestation, m_fonts);
        view->show();
        QVERIFY(QTest::qWaitForWindowExposed(view.get()));
        attestation.setVitale(specimenCard(1));
        QTRY_COMPARE(view->grab().toImage().pixelColor(20, 390).lightness(), 255);
        QCOMPARE(view->grab().toImage().pixelColor(8, 390), QColor(Qt::black));
    }

    void thePageDoesNotDependOnTheDesktopsColours()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        attestation.setVitale(specimenCard(2));
        const auto view = MVNewAttestationView::viewOf(attestation, m_fonts);
        const QImage light = shown(*view);
        const QPalette before = QApplication::palette();
        QApplication::setPalette(darkPalette());
        const QImage dark = shown(*view);
        QApplication::setPalette(before);
        QCOMPARE(dark, light);
    }

    // Letters cover other pixels, but each part of the page is equally dark.
    void twoPixelsPerPointShowTheSamePage()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        attestation.setVitale(specimenCard(2));
        const auto view = MVNewAttestationView::viewOf(attestation, m_fonts);
        const QImage single = shown(*view);
        const QImage twice = shown(*view, 2);
        QCOMPARE(twice.size(), QSize(1190, 1684));
        constexpr int side = 12; // points
        for (int y = 1; y + side < 842; y += side) {
            for (int x = 1; x + side < 595; x += side) {
                const double difference =
                    darkness(single, {x, y, side, side}) - darkness(twice, {2 * x, 2 * y, 2 * side, 2 * side});
                QVERIFY2(qAbs(difference) < 20, qPrintable(u"%1 at %2, %3"_s.arg(difference).arg(x).arg(y)));
            }
        }
    }

    // The page is drawn again at every scale, not stretched: each pixel is that of the ink at that scale.
    void thePageIsSharpAtEveryScale_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<double>("pixelsPerPoint");
        for (const double scale : {1.0, 0.73, 0.5, 0.2}) {
            for (const double pixels : {1.0, 1.25, 1.5, 2.0})
                QTest::addRow("%g, %g pixels", scale, pixels) << scale << pixels;
        }
    }

    void thePageIsSharpAtEveryScale()
    {
        QFETCH(const double, scale);
        QFETCH(const double, pixelsPerPoint);
        MVNewAttestation attestation(m_settings.store(), m_logos);
        attestation.setVitale(specimenCard(2));
        const auto view = MVNewAttestationView::viewOf(attestation, m_fonts);
        view->setPlacement(QTransform::fromScale(scale, scale));

        QImage seen((QSizeF(view->size()) * pixelsPerPoint).toSize(), QImage::Format_RGB32);
        seen.fill(Qt::white);
        QImage drawn = seen;
        seen.setDevicePixelRatio(pixelsPerPoint);
        view->render(&seen, {}, {}, {});
        QPainter painter(&drawn);
        painter.scale(scale * pixelsPerPoint, scale * pixelsPerPoint);
        PagePainter().paint(painter, AttestationLayout::drawRect(attestation.page(), {595, 842}, m_fonts));
        seen.setDevicePixelRatio(1);
        QCOMPARE(seen, drawn);
    }

    void theBorderIsVisibleOnAllSidesAtEveryScale()
    {
        const MVNewAttestation attestation(m_settings.store(), m_logos);
        const auto view = MVNewAttestationView::viewOf(attestation, m_fonts);
        for (const double scale : {1.0, 0.9, 0.77, 0.5, 0.31}) {
            view->setPlacement(QTransform(scale, 0, 0, scale, 10.37, 20.71));
            const QImage image = shown(*view);
            const QPoint middle = image.rect().center();
            const auto isGrey = [&image](int x, int y) { return image.pixelColor(x, y).lightness() < 240; };
            QVERIFY(isGrey(0, middle.y()) || isGrey(1, middle.y()));
            QVERIFY(isGrey(image.width() - 1, middle.y()) || isGrey(image.width() - 2, middle.y()));
            QVERIFY(isGrey(middle.x(), 0) || isGrey(middle.x(), 1));
            QVERIFY(isGrey(middle.x(), image.height() - 1) || isGrey(middle.x(), image.height() - 2));
        }
    }

    void anUnchangedPlacementIsNotPaintedAgain()
    {
        const MVNewAttestation attestation(m_settings.store(), m_logos);
        const auto view = MVNewAttestationView::viewOf(attestation, m_fonts);
        view->show();
        QVERIFY(QTest::qWaitForWindowExposed(view.get()));
        view->setPlacement(QTransform::fromScale(0.5, 0.5));
        QTest::qWait(0);
        const EventCount count(*view, QEvent::Paint);
        view->setPlacement(QTransform::fromScale(0.5, 0.5));
        QTest::qWait(0);
        QCOMPARE(count.value(), 0);
        view->setPlacement(QTransform(0.5, 0, 0, 0.5, 0.2, 0));
        QTRY_COMPARE(count.value(), 1);
    }

    void aViewWithoutFontsIsABlankPage()
    {
        MVNewAttestationView view;
        view.setDocumentSize({100, 100});
        view.resize(100, 100);
        QCOMPARE(shown(view).pixelColor(0, 0), QColor(Qt::white));
        QCOMPARE(shown(view).pixelColor(50, 50), QColor(Qt::white));
    }
};

template class RunnableTests<tst_MVNewAttestationView, QApplication>;
#include "tst_mvnewattestationview.moc"
