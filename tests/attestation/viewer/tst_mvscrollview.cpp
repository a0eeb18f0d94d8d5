#include "attestation/viewer/MVClipView.h"
#include "attestation/viewer/MVScrollView.h"
#include "tests/attestation/viewer/Sheet.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QApplication>
#include <QPainter>
#include <QScrollBar>
#include <QTest>

#include <array>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

// A shown scroll view as in the viewer, with a document of 600 by 800 points.
class Scroll
{
public:
    Scroll()
    {
        view.setFrameShape(QFrame::NoFrame);
        view.setContentView(clip);
        view.setDocumentView(document);
        view.resize(620, 820);
        view.show();
    }

    [[nodiscard]] double scale() const { return clip->scale().width(); }

    MVScrollView view;
    MVClipView* clip = new MVClipView;
    Sheet* document = new Sheet({600, 800});
};

} // namespace

class tst_MVScrollView : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void everyChangeOfFrameSetsTheScale_data()
    {
        QTest::addColumn<int>("way");
        QTest::addColumn<bool>("isShown");
        for (int way = 0; way < 4; ++way) {
            QTest::addRow("%d, shown", way) << way << true;
            QTest::addRow("%d, hidden", way) << way << false;
        }
    }

    void everyChangeOfFrameSetsTheScale()
    {
        QFETCH(const int, way);
        QFETCH(const bool, isShown);
        Scroll scroll;
        scroll.view.setVisible(isShown);
        scroll.view.setGeometry(0, 0, 310, 820);
        const std::array<std::function<void()>, 4> ways{
            [&] { scroll.view.setFrame({3, 4, 310, 820}); },
            [&] { scroll.view.setFrameOrigin({3, 4}); },
            [&] { scroll.view.setFrameSize({310, 820}); },
            [&] { scroll.view.setFrameRotation(45); },
        };
        scroll.clip->setScale({3, 3});
        ways.at(std::size_t(way))();
        QCOMPARE(scroll.clip->scale(), QSizeF(0.5, 0.5));
    }

    void theUsersResizingSetsTheScale()
    {
        Scroll scroll;
        QCOMPARE(scroll.scale(), 1.0);
        scroll.view.resize(310, 1000);
        QCOMPARE(scroll.scale(), 0.5);
        QCOMPARE(scroll.clip->scale().height(), 0.5);
        scroll.view.resize(1000, 205);
        QCOMPARE(scroll.scale(), 0.25);
        scroll.view.resize(310, 205);
        QCOMPARE(scroll.scale(), 0.25);
    }

    void aMoveSetsTheScale()
    {
        Scroll scroll;
        scroll.clip->setScale({3, 3});
        scroll.view.move(30, 40);
        QCOMPARE(scroll.scale(), 1.0);
    }

    void thePageReturnsToItsExactSizeAndIsNotScaledUp()
    {
        Scroll scroll;
        for (int width = 600; width > 100; width -= 7)
            scroll.view.resize(width, 333);
        QVERIFY(scroll.scale() < 0.25);
        for (const QSize size : {QSize(620, 820), QSize(3000, 2000)}) {
            scroll.view.resize(size);
            QVERIFY(scroll.scale() == 1.0);
            QVERIFY(scroll.clip->scale().height() == 1.0);
        }
        QCOMPARE(scroll.document->geometry(), QRect(1200, 600, 600, 800));
    }

    void theScaledPageIsCentred()
    {
        Scroll scroll;
        scroll.view.resize(310, 820);
        QCOMPARE(scroll.clip->bounds(), QRectF(-10, -420, 620, 1640));
        QCOMPARE(scroll.document->geometry(), QRect(5, 210, 300, 400));
    }

    void theWholePageIsVisibleAtEveryWindowSize()
    {
        Scroll scroll;
        for (const QSize size : {QSize(137, 900), QSize(900, 93), QSize(411, 617), QSize(60, 60), QSize(619, 819)}) {
            scroll.view.resize(size);
            QVERIFY(scroll.clip->rect().contains(scroll.document->geometry()));
            QCOMPARE(scroll.clip->size(), size);
        }
    }

    void aFrameSetWhileHiddenIsUsed()
    {
        MVScrollView view;
        auto* clip = new MVClipView;
        view.setContentView(clip);
        view.setDocumentView(new Sheet({600, 800}));
        view.setFrameSize({310, 820});
        QCOMPARE(clip->scale(), QSizeF(0.5, 0.5));
    }

    void anotherContentViewIsNotChanged()
    {
        MVScrollView view;
        auto* other = new ClipView;
        view.setContentView(other);
        view.setDocumentView(new Sheet({600, 800}));
        view.setFrameSize({310, 820});
        view.changeClipViewScale();
        QCOMPARE(other->sizeToWindow({1, 1}), QSizeF(1, 1));

        MVScrollView plain;
        plain.setFrameSize({310, 820});
        QCOMPARE(plain.documentView(), nullptr);
    }

    void withoutADocumentOnlyTheMarginsAreFitted()
    {
        MVScrollView view;
        auto* clip = new MVClipView;
        view.setContentView(clip);
        view.setFrameSize({10, 40});
        QCOMPARE(clip->scale(), QSizeF(0.5, 0.5));
    }

    void aViewThatHadNoRoomShowsThePageWhenEnlarged()
    {
        Scroll scroll;
        scroll.view.setFrameSize({0, 0});
        scroll.view.setFrameSize({310, 820});
        QCOMPARE(scroll.scale(), 0.5);
    }

    void theSizeHintHasTenPointsOnEachSideOfThePage()
    {
        const Scroll scroll;
        QCOMPARE(scroll.view.sizeHint(), QSize(620, 820));
    }

    // The viewer always scales the page to fit. A page that does not fit can be scrolled.
    void theScrollBarsFollowThePage()
    {
        Scroll scroll;
        scroll.clip->setScale({2, 2});
        const QSizeF seen = scroll.clip->bounds().size();
        QCOMPARE(scroll.view.horizontalScrollBar()->maximum(), qRound(600 - seen.width()));
        QCOMPARE(scroll.view.verticalScrollBar()->maximum(), qRound(800 - seen.height()));
        scroll.clip->scrollToPoint({100, 30});
        QCOMPARE(scroll.view.horizontalScrollBar()->value(), 100);
        QCOMPARE(scroll.view.verticalScrollBar()->value(), 30);
        scroll.clip->resetScaling();
        QCOMPARE(scroll.view.horizontalScrollBar()->maximum(), 0);
        QCOMPARE(scroll.view.verticalScrollBar()->maximum(), 0);
    }

    void centringUpdatesTheScrollBarsEvenWhenThePageDoesNotMove()
    {
        Scroll scroll;
        scroll.view.horizontalScrollBar()->setMaximum(77);
        scroll.clip->centerView();
        QCOMPARE(scroll.view.horizontalScrollBar()->maximum(), 0);
    }

    void thePageFollowsTheScrollBars()
    {
        Scroll scroll;
        scroll.clip->setScale({2, 2});
        scroll.view.horizontalScrollBar()->setValue(40);
        scroll.view.verticalScrollBar()->setValue(50);
        QCOMPARE(scroll.clip->bounds().topLeft(), QPointF(40, 50));
        QCOMPARE(scroll.document->pos(), QPoint(-80, -100));
    }
};

template class RunnableTests<tst_MVScrollView, QApplication>;
#include "tst_mvscrollview.moc"
