#include "support/views/MVSimpleOpaqueView.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/support/views/PaintRecord.h"

#include <QApplication>
#include <QPainter>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// A view painted on a magenta picture.
QImage drawn(MVSimpleOpaqueView& view, const QRect& part)
{
    QImage image(view.size(), QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    view.render(&painter, part.topLeft(), part, QWidget::RenderFlags());
    return image;
}

} // namespace

class tst_MVSimpleOpaqueView : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theViewIsOpaqueWithAndWithoutAColour()
    {
        MVSimpleOpaqueView view;
        QVERIFY(view.isOpaque());
        QVERIFY(view.testAttribute(Qt::WA_OpaquePaintEvent));
        view.setBackgroundColor(QColor(Qt::green));
        QVERIFY(view.isOpaque());
    }

    void withoutAColourNothingIsDrawn()
    {
        MVSimpleOpaqueView view;
        view.resize(40, 30);
        QVERIFY(!view.backgroundColor());
        QCOMPARE(drawn(view, view.rect()).pixelColor(20, 15), QColor(Qt::magenta));
    }

    void onlyTheDirtyRectangleIsFilled()
    {
        MVSimpleOpaqueView view;
        view.resize(40, 30);
        view.setBackgroundColor(QColor(0, 162, 1));
        const QImage image = drawn(view, QRect(10, 10, 10, 10));
        QCOMPARE(image.pixelColor(10, 10), QColor(0, 162, 1));
        QCOMPARE(image.pixelColor(19, 19), QColor(0, 162, 1));
        QCOMPARE(image.pixelColor(9, 10), QColor(Qt::magenta));
        QCOMPARE(image.pixelColor(20, 20), QColor(Qt::magenta));
    }

    void settingTheColourRedrawsTheViewAndRemovingItStopsTheFill()
    {
        MVSimpleOpaqueView view;
        view.resize(40, 30);
        view.setBackgroundColor(QColor(Qt::blue));
        QCOMPARE(drawn(view, view.rect()).pixelColor(39, 29), QColor(Qt::blue));
        view.setBackgroundColor(QColor(Qt::red));
        QCOMPARE(drawn(view, view.rect()).pixelColor(0, 0), QColor(Qt::red));
        view.setBackgroundColor(std::nullopt);
        QCOMPARE(drawn(view, view.rect()).pixelColor(0, 0), QColor(Qt::magenta));
    }

    void settingTheColourAsksForOneRepaintOfEverything()
    {
        MVSimpleOpaqueView view;
        view.resize(40, 30);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        const PaintRecord record(view);
        view.setBackgroundColor(QColor(Qt::blue));
        QTRY_COMPARE(record.painted(), QList<QRect>{view.rect()});
        QCoreApplication::processEvents();
        QCOMPARE(record.painted().size(), 1);
    }
};

template class RunnableTests<tst_MVSimpleOpaqueView, QApplication>;
#include "tst_mvsimpleopaqueview.moc"
