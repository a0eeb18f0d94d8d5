#include "attestation/viewer/MVClipView.h"
#include "attestation/viewer/ScrollView.h"
#include "tests/attestation/viewer/Sheet.h"
#include "tests/common/EventCount.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QPainter>
#include <QScrollBar>
#include <QTest>
#include <QVBoxLayout>

#include <array>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

// A clip view, and its document of 600 by 800 points.
struct Clip
{
    Clip() { view.setDocumentView(&document); }

    MVClipView view;
    Sheet document{{600, 800}}; // a child of the view, destroyed before it
};

} // namespace

class tst_MVClipView : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void everyChangeOfFrameCentresThePage_data()
    {
        QTest::addColumn<int>("way");
        for (int way = 0; way < 4; ++way)
            QTest::addRow("%d", way) << way;
    }

    void everyChangeOfFrameCentresThePage()
    {
        QFETCH(const int, way);
        Clip clip;
        clip.view.setGeometry(7, 9, 700, 901);
        const std::array<std::function<void()>, 4> ways{
            [&] { clip.view.setFrame({7, 9, 700, 901}); },
            [&] { clip.view.setFrameOrigin({7, 9}); },
            [&] { clip.view.setFrameSize({700, 901}); },
            [&] { clip.view.setFrameRotation(90); },
        };
        clip.view.scrollToPoint({3, 4});
        ways.at(std::size_t(way))();
        QCOMPARE(clip.view.frame(), QRectF(7, 9, 700, 901));
        QCOMPARE(clip.view.bounds(), QRectF(-50, -51, 700, 901));
        QCOMPARE(clip.document.geometry(), QRect(50, 51, 600, 800));
    }

    void aShownViewIsCentredByItsLayout()
    {
        Clip clip;
        clip.view.resize(800, 1000);
        clip.view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&clip.view));
        QCOMPARE(clip.document.geometry(), QRect(100, 100, 600, 800));
        clip.view.resize(700, 900);
        QCOMPARE(clip.document.geometry(), QRect(50, 50, 600, 800));
    }

    void settingTheScaleRedrawsTheView()
    {
        Clip clip;
        clip.view.resize(700, 900);
        clip.view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&clip.view));
        QCoreApplication::processEvents();
        const EventCount paints(clip.view, QEvent::Paint);
        QCoreApplication::processEvents();
        QCOMPARE(paints.value(), 0);
        // The same result as before.
        clip.view.setScale({1, 1});
        QTRY_COMPARE(paints.value(), 1);
    }

    void theScaleIsTheOneThatWasSet()
    {
        Clip clip;
        clip.view.setFrame({0, 0, 400, 500});
        clip.view.setScale({0.5, 0.5});
        QCOMPARE(clip.view.scale(), QSizeF(0.5, 0.5));
        QCOMPARE(clip.view.bounds(), QRectF(-100, -100, 800, 1000));
        QCOMPARE(clip.document.geometry(), QRect(50, 50, 300, 400));
    }

    void aSmallerScaleWithTheSameOriginShowsTheDocumentSmaller()
    {
        Clip clip;
        clip.view.setFrame({0, 0, 300, 400});
        clip.view.setScale({0.5, 0.5});
        QCOMPARE(clip.view.bounds(), QRectF(0, 0, 600, 800));
        QCOMPARE(clip.document.geometry(), QRect(0, 0, 300, 400));
    }

    // The scale is not multiplied with the earlier ones.
    void aNewScaleReplacesThePreviousOne()
    {
        Clip clip;
        clip.view.setFrame({0, 0, 400, 500});
        for (const double scale : {0.5, 0.25, 2.0, 0.3})
            clip.view.setScale({scale, scale});
        QCOMPARE(clip.view.scale(), QSizeF(0.3, 0.3));
    }

    void resettingGivesOneToOne()
    {
        Clip clip;
        clip.view.setFrame({0, 0, 700, 900});
        clip.view.setScale({0.3, 0.3});
        clip.view.resetScaling();
        QVERIFY(clip.view.scale().width() == 1.0 && clip.view.scale().height() == 1.0);
        QCOMPARE(clip.document.geometry(), QRect(50, 50, 600, 800));
    }

    void theDocumentKeepsItsOwnSize()
    {
        Clip clip;
        clip.view.setFrame({0, 0, 60, 80});
        clip.view.setScale({0.05, 0.05});
        QCOMPARE(clip.document.documentSize(), QSizeF(600, 800));
    }

    void theLayoutOfTheUiFileIsRemoved()
    {
        Clip clip;
        auto* layout = new QVBoxLayout(&clip.view);
        layout->addWidget(&clip.document);
        clip.view.awakeFromNib();
        QCOMPARE(clip.view.layout(), nullptr);
    }

    void aLargerDocumentCanBeScrolledToItsEdgesOnly()
    {
        Clip clip;
        clip.view.setFrame({0, 0, 300, 1000});
        QCOMPARE(clip.view.bounds(), QRectF(0, -100, 300, 1000));
        clip.view.scrollToPoint(clip.view.constrainScrollPoint({100.5, 17}));
        QCOMPARE(clip.view.bounds(), QRectF(101, -100, 300, 1000));
        QCOMPARE(clip.document.geometry(), QRect(-101, 100, 600, 800));
        QCOMPARE(clip.view.constrainScrollPoint({1000, 17}), QPointF(300, -100));
    }

    void aScrolledDocumentStaysWhereItIsWhenTheFrameMoves()
    {
        Clip clip;
        clip.view.setFrame({0, 0, 300, 400});
        clip.view.scrollToPoint({120, 60});
        clip.view.setFrameOrigin({5, 5});
        QCOMPARE(clip.view.bounds(), QRectF(120, 60, 300, 400));
        clip.view.setFrameSize({500, 780});
        QCOMPARE(clip.view.bounds(), QRectF(100, 20, 500, 780));
    }

    void aDocumentOfAnotherSizeIsCentred()
    {
        Clip clip;
        clip.view.setFrame({0, 0, 700, 900});
        clip.document.setDocumentSize({300, 400});
        QCOMPARE(clip.view.bounds(), QRectF(-200, -250, 700, 900));
        QCOMPARE(clip.document.geometry(), QRect(200, 250, 300, 400));
    }

    void aDocumentThatGrowsInUnchangedBoundsIsShownLarger()
    {
        Clip clip;
        clip.view.setFrame({0, 0, 300, 400});
        clip.document.setDocumentSize({900, 1000});
        QCOMPARE(clip.view.bounds(), QRectF(0, 0, 300, 400));
        QCOMPARE(clip.document.geometry(), QRect(0, 0, 900, 1000));
    }

    void aMovedDocumentIsCentredWhenItsBoundsChange()
    {
        Clip clip;
        clip.view.setFrame({0, 0, 700, 900});
        clip.view.viewBoundsChanged();
        QCOMPARE(clip.view.bounds().topLeft(), QPointF(-50, -50));
        clip.view.viewFrameChanged();
        QCOMPARE(clip.view.bounds().topLeft(), QPointF(-50, -50));
    }

    // The base class would move the bounds before it notifies the scroll view.
    void theScrollViewIsNotifiedBeforeTheBoundsChange()
    {
        ScrollView scroll;
        auto* view = new MVClipView;
        scroll.setContentView(view);
        auto* document = new Sheet({600, 800});
        scroll.setDocumentView(document);
        view->setFrame({0, 0, 300, 400});
        view->scrollToPoint({300, 400});
        QCOMPARE(scroll.horizontalScrollBar()->value(), 300);
        QCOMPARE(scroll.horizontalScrollBar()->pageStep(), 300);

        QList<QPointF> origins;
        connect(scroll.horizontalScrollBar(), &QScrollBar::rangeChanged, this,
                [&] { origins.append(view->bounds().topLeft()); });
        document->setDocumentSize({500, 800});
        QCOMPARE(origins, QList<QPointF>({{300, 400}}));
        QCOMPARE(view->bounds(), QRectF(200, 400, 300, 400));
        QCOMPARE(scroll.horizontalScrollBar()->value(), 200);
    }

    void withoutADocumentTheOriginIsTheCentre()
    {
        MVClipView view;
        view.setFrame({0, 0, 101, 50});
        QCOMPARE(view.bounds(), QRectF(-51, -25, 101, 50));
        QCOMPARE(view.documentSize(), QSizeF(0, 0));
    }

    void theBackgroundHasTheDesktopsColour()
    {
        Clip clip;
        QPalette palette;
        palette.setColor(QPalette::Window, Qt::darkGreen);
        clip.view.setPalette(palette);
        clip.view.setFrame({0, 0, 620, 820});
        const QImage image = clip.view.grab().toImage();
        QCOMPARE(image.pixelColor(5, 5), QColor(Qt::darkGreen));
        QCOMPARE(image.pixelColor(10, 10), QColor(Qt::white));
        QCOMPARE(image.pixelColor(609, 809), QColor(Qt::white));
        QCOMPARE(image.pixelColor(610, 810), QColor(Qt::darkGreen));
    }
};

template class RunnableTests<tst_MVClipView, QApplication>;
#include "tst_mvclipview.moc"
