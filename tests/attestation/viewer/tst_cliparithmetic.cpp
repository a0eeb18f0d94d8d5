#include "attestation/viewer/ClipArithmetic.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

namespace {

constexpr QSizeF page{595, 842};
constexpr QSizeF needed{615, 862};

} // namespace

class tst_ClipArithmetic : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aDocumentThatFitsIsNotScaled_data()
    {
        QTest::addColumn<QSizeF>("available");
        QTest::newRow("just") << QSizeF(615, 862);
        QTest::newRow("wider") << QSizeF(4000, 862);
        QTest::newRow("higher") << QSizeF(615, 3000);
        QTest::newRow("both") << QSizeF(3840, 2160);
    }

    void aDocumentThatFitsIsNotScaled()
    {
        QFETCH(const QSizeF, available);
        QVERIFY(!fittingScale(needed, available).has_value());
    }

    void theScaleIsTheSmallerOfTheTwoDirections_data()
    {
        QTest::addColumn<QSizeF>("available");
        QTest::addColumn<double>("scale");
        QTest::newRow("one point too narrow") << QSizeF(614, 862) << 614.0 / 615;
        QTest::newRow("one point too low") << QSizeF(615, 861) << 861.0 / 862;
        QTest::newRow("narrow, and high enough") << QSizeF(300, 2000) << 300.0 / 615;
        QTest::newRow("low, and wide enough") << QSizeF(2000, 300) << 300.0 / 862;
        QTest::newRow("more narrow than low") << QSizeF(200, 800) << 200.0 / 615;
        QTest::newRow("more low than narrow") << QSizeF(600, 200) << 200.0 / 862;
        QTest::newRow("no lower limit") << QSizeF(1, 1) << 1.0 / 862;
        QTest::newRow("nothing to be seen") << QSizeF(0, 500) << 0.0;
    }

    void theScaleIsTheSmallerOfTheTwoDirections()
    {
        QFETCH(const QSizeF, available);
        QFETCH(const double, scale);
        QCOMPARE(fittingScale(needed, available), std::optional(scale));
    }

    void theDocumentIsCentredInLargerBounds_data()
    {
        QTest::addColumn<QSizeF>("bounds");
        QTest::addColumn<QPointF>("origin");
        QTest::newRow("ten points on each side") << QSizeF(615, 862) << QPointF(-10, -10);
        QTest::newRow("an even rest") << QSizeF(701, 1042) << QPointF(-53, -100);
        QTest::newRow("halves are rounded away from zero") << QSizeF(700, 1001) << QPointF(-53, -80);
        QTest::newRow("half a point") << QSizeF(596, 843) << QPointF(-1, -1);
        QTest::newRow("less than half a point") << QSizeF(595.9, 842.9) << QPointF(0, 0);
        // Halfway in single precision, and a little less in double precision.
        QTest::newRow("single precision") << QSizeF(599.9999999, 842 + 6.99999999) << QPointF(-3, -4);
    }

    void theDocumentIsCentredInLargerBounds()
    {
        QFETCH(const QSizeF, bounds);
        QFETCH(const QPointF, origin);
        // The result does not depend on the earlier or the proposed origin.
        QCOMPARE(centredOrigin(page, QRectF(QPointF(123, -45), bounds)), origin);
        QCOMPARE(constrainedOrigin({}, page, bounds), origin);
        QCOMPARE(constrainedOrigin({77, 2000}, page, bounds), origin);
    }

    void boundsThatAreNotLargerKeepTheirOrigin()
    {
        QCOMPARE(centredOrigin(page, {12.25, 3.5, 595, 842}), QPointF(12.25, 3.5));
        QCOMPARE(centredOrigin(page, {12.25, 3.5, 100, 100}), QPointF(12.25, 3.5));
        QCOMPARE(centredOrigin(page, {12.25, 3.5, 695, 100}), QPointF(-50, 3.5));
        QCOMPARE(centredOrigin(page, {12.25, 3.5, 100, 942}), QPointF(12.25, -50));
    }

    void theDocumentAlwaysFillsSmallerBounds_data()
    {
        QTest::addColumn<QPointF>("proposed");
        QTest::addColumn<QPointF>("origin");
        QTest::newRow("inside") << QPointF(120, 300) << QPointF(120, 300);
        QTest::newRow("rounded") << QPointF(120.5, 300.49) << QPointF(121, 300);
        QTest::newRow("too far to the left and up") << QPointF(-4, -900) << QPointF(0, 0);
        QTest::newRow("too far to the right and down") << QPointF(196, 9000) << QPointF(195, 442);
    }

    void theDocumentAlwaysFillsSmallerBounds()
    {
        QFETCH(const QPointF, proposed);
        QFETCH(const QPointF, origin);
        QCOMPARE(constrainedOrigin(proposed, page, {400, 400}), origin);
    }

    void boundsOfTheDocumentsOwnSizeBeginAtItsCorner()
    {
        QCOMPARE(constrainedOrigin({50, -50}, page, page), QPointF(0, 0));
    }

    void eachDirectionIsConstrainedSeparately()
    {
        QCOMPARE(constrainedOrigin({50, 60}, page, {695, 400}), QPointF(-50, 60));
        QCOMPARE(constrainedOrigin({50, 60}, page, {400, 942}), QPointF(50, -50));
    }

    void boundsShowMoreWhenTheScaleIsSmaller()
    {
        BoundsTransform transform;
        transform.setFrame({0, 0, 300, 200});
        QCOMPARE(transform.bounds(), QRectF(0, 0, 300, 200));
        transform.scaleUnitSquareToSize({0.5, 0.25});
        QCOMPARE(transform.bounds(), QRectF(0, 0, 600, 800));
        QCOMPARE(transform.sizeToWindow({1, 1}), QSizeF(0.5, 0.25));
        QCOMPARE(transform.sizeFromWindow({1, 1}), QSizeF(2, 4));
    }

    void scalesAreMultiplied()
    {
        BoundsTransform transform;
        transform.scaleUnitSquareToSize({0.5, 0.5});
        transform.scaleUnitSquareToSize({0.5, 2});
        QCOMPARE(transform.sizeToWindow({1, 1}), QSizeF(0.25, 1));
    }

    void aFrameOfAnotherSizeKeepsTheScaleAndTheOrigin()
    {
        BoundsTransform transform;
        transform.setFrame({0, 0, 300, 200});
        transform.scaleUnitSquareToSize({0.5, 0.5});
        transform.setBoundsOrigin({-10, 4});
        transform.setFrame({5, 6, 100, 50});
        QCOMPARE(transform.bounds(), QRectF(-10, 4, 200, 100));
        QCOMPARE(transform.sizeToWindow({1, 1}), QSizeF(0.5, 0.5));
    }

    void placesOfTheDocumentAreScaledFromTheBoundsOrigin()
    {
        BoundsTransform transform;
        transform.setFrame({40, 50, 300, 200});
        transform.setBoundsOrigin({-10, -20});
        transform.scaleUnitSquareToSize({0.5, 0.5});
        QCOMPARE(transform.toFrame().map(QPointF(-10, -20)), QPointF(0, 0));
        QCOMPARE(transform.toFrame().map(QPointF(0, 0)), QPointF(5, 10));
        QCOMPARE(transform.toFrame().map(QPointF(595, 842)), QPointF(302.5, 431));
    }

    // Every scale that a window can have, each with its rounding errors.
    void scalingByTheInverseGivesExactlyOne()
    {
        for (int available = 1; available < 862; ++available) {
            BoundsTransform transform;
            const double scale = available / 862.0;
            transform.scaleUnitSquareToSize({scale, scale});
            transform.scaleUnitSquareToSize(transform.sizeFromWindow({1, 1}));
            const QSizeF unit = transform.sizeToWindow({1, 1});
            QVERIFY(unit.width() == 1.0 && unit.height() == 1.0);
        }
    }

    void aScaleThatIsNotPositiveIsIgnored()
    {
        BoundsTransform transform;
        transform.setFrame({0, 0, 300, 200});
        transform.scaleUnitSquareToSize({0, 1});
        transform.scaleUnitSquareToSize({1, -1});
        transform.scaleUnitSquareToSize({qQNaN(), 1});
        QCOMPARE(transform.bounds(), QRectF(0, 0, 300, 200));
    }
};

template class RunnableTests<tst_ClipArithmetic, void>;
#include "tst_cliparithmetic.moc"
