#include "attestation/page/VectorImage.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_VectorImage : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void outlinesAreReadWithTheirColours()
    {
        const auto image = VectorImage::parsed("360 150.5 2 Régime des mines\n"
                                               "0.5 0 1 rg\n1 2 m\n3 4 l\n5 6 7 8 9 10 c\nh\nf*\n"
                                               "0 0 0 rg\n0 0 m\nh\nf\n");
        QVERIFY(image);
        QCOMPARE(image->title, u"Régime des mines"_s);
        QCOMPARE(image->size, QSizeF(360, 150.5));
        QCOMPARE(image->outlines.size(), 2U);
        const FilledOutline& outline = image->outlines[0];
        QCOMPARE(outline.color, (std::array{0.5, 0.0, 1.0}));
        QVERIFY(outline.isEvenOdd);
        QVERIFY(!image->outlines[1].isEvenOdd);
        QCOMPARE(outline.steps.size(), 4U);
        QCOMPARE(outline.steps[1].points[0], QPointF(3, 4));
        QCOMPARE(outline.steps[2].kind, OutlineStep::Kind::Curve);
        QCOMPARE(outline.steps[2].points[2], QPointF(9, 10));
        QVERIFY(image->operators.startsWith("0.5 0 1 rg\n"));
    }

    void anIncompleteFileGivesNoImage_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("not a drawing");
        QTest::newRow("no size") << QByteArray("0 10 1 T\n0 0 0 rg\n0 0 m\nf\n");
        QTest::newRow("no title") << QByteArray("10 10 1\n0 0 0 rg\n0 0 m\nf\n");
        QTest::newRow("no outline") << QByteArray("10 10 0 T\n");
        QTest::newRow("an outline fewer") << QByteArray("10 10 2 T\n0 0 0 rg\n0 0 m\nf\n");
        QTest::newRow("cut in a line") << QByteArray("10 10 1 T\n0 0 0 rg\n0 0 m\n1 1");
        QTest::newRow("cut before the fill") << QByteArray("10 10 1 T\n0 0 0 rg\n0 0 m\n1 1 l\n");
        QTest::newRow("a number fewer") << QByteArray("10 10 1 T\n0 0 0 rg\n0 m\nf\n");
        QTest::newRow("no number") << QByteArray("10 10 1 T\n0 0 0 rg\n0 x m\nf\n");
        QTest::newRow("no colour") << QByteArray("10 10 1 T\n0 0 2 rg\n0 0 m\nf\n");
        QTest::newRow("another operator") << QByteArray("10 10 1 T\n0 0 0 rg\n0 0 m\n/X gs\nf\n");
        QTest::newRow("a line before it begins") << QByteArray("10 10 1 T\n0 0 0 rg\n1 1 l\nf\n");
        QTest::newRow("a fill of nothing") << QByteArray("10 10 1 T\n0 0 0 rg\nf\n");
    }
    void anIncompleteFileGivesNoImage()
    {
        QFETCH(const QByteArray, file);
        QVERIFY(!VectorImage::parsed(file));
    }
};

template class RunnableTests<tst_VectorImage, QCoreApplication>;
#include "tst_vectorimage.moc"
