#include "tests/common/RunnableTests.h"
#include "tests/prefs/ControllerTest.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

/// Changes from one pane to another.
class tst_PaneChanges final : public ControllerTest
{
    Q_OBJECT

private:
    RecordingPane* m_a = nullptr;
    RecordingPane* m_b = nullptr;
    RecordingPane* m_c = nullptr;

    void open()
    {
        m_a = pane(u"a"_s, Qt::red);
        m_b = pane(u"b"_s, Qt::blue);
        m_c = pane(u"c"_s, Qt::green);
        m_controller->show();
        notes();
    }

    QList<QWidget*> views(std::initializer_list<RecordingPane*> panes) const
    {
        QList<QWidget*> found;
        for (RecordingPane* one : panes)
            found.append(one->paneView());
        return found;
    }

    QColor seen() const { return m_controller->contentView()->grab().toImage().pixelColor(250, 140); }

private Q_SLOTS:
    void aClickChangesThePaneAtOnceAndFades()
    {
        open();
        QElapsedTimer clock;
        clock.start();
        click(u"b"_s);
        QCOMPARE(notes(), (QStringList{u"a will disappear"_s, u"b will appear"_s}));
        QCOMPARE(m_controller->currentPane(), m_b);
        QCOMPARE(m_controller->toolbar().selectedItemIdentifier(), u"b"_s);
        QVERIFY(button(u"b"_s)->isChecked());
        QVERIFY(!button(u"a"_s)->isChecked());
        QCOMPARE(subviews(), views({m_a, m_b}));
        QCOMPARE(m_b->paneView()->geometry(), QRect(0, 0, 500, 280));
        QCOMPARE(m_controller->contentView()->findChild<QVariantAnimation*>()->duration(), 300);

        QTRY_VERIFY(!m_notes.isEmpty());
        QVERIFY2(clock.elapsed() >= 280, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(notes(), (QStringList{u"a did disappear"_s, u"b did appear"_s}));
        QCOMPARE(subviews(), views({m_b}));
        QVERIFY(m_b->paneView()->isVisible());
        QCOMPARE(m_a->paneView()->parentWidget(), nullptr);
    }

    void duringAFadeBothPanesAreVisible()
    {
        open();
        QCOMPARE(seen(), QColor(Qt::red));
        click(u"b"_s);
        auto* fade = m_controller->contentView()->findChild<QVariantAnimation*>();
        fade->pause();
        fade->setCurrentTime(0);
        QCOMPARE(seen(), QColor(Qt::red));
        fade->setCurrentTime(150);
        QVERIFY2(std::abs(seen().red() - 128) < 4 && std::abs(seen().blue() - 128) < 4, qPrintable(seen().name()));
        fade->resume();
        QTRY_VERIFY(!isFading());
        QCOMPARE(seen(), QColor(Qt::blue));
    }

    void theNewPaneReceivesMouseEventsDuringTheFade()
    {
        open();
        click(u"b"_s);
        QVERIFY(isFading());
        QCOMPARE(m_controller->contentView()->childAt(250, 140), m_b->paneView());
        QVERIFY(m_b->paneView()->isVisible());
        QVERIFY(!m_a->paneView()->isVisible());
    }

    void aClickOnTheSelectedButtonDoesNothing()
    {
        open();
        click(u"a"_s);
        QCOMPARE(notes(), QStringList());
        QVERIFY(!isFading());
        QVERIFY(button(u"a"_s)->isChecked());
        m_controller->showPane(m_a);
        QCOMPARE(notes(), QStringList());
    }

    void afterTwoQuickClicksTheSecondPaneIsBelowTheThird()
    {
        open();
        click(u"b"_s);
        click(u"c"_s);
        QCOMPARE(m_controller->currentPane(), m_c);
        QCOMPARE(subviews(), views({m_a, m_b, m_c}));
        // The first view is still the one that was shown before the first click.
        QCOMPARE(notes(),
                 (QStringList{u"a will disappear"_s, u"b will appear"_s, u"a will disappear"_s, u"c will appear"_s}));
        QTRY_COMPARE(m_notes.size(), 4);
        QCOMPARE(notes(),
                 (QStringList{u"a did disappear"_s, u"b did appear"_s, u"a did disappear"_s, u"c did appear"_s}));
        QCOMPARE(subviews(), views({m_b, m_c}));
        QVERIFY(m_c->paneView()->isVisible());
        QVERIFY(!m_b->paneView()->isVisible());
        QCOMPARE(seen(), QColor(Qt::green));

        // The next change removes the second pane.
        click(u"a"_s);
        QCOMPARE(notes(), (QStringList{u"b will disappear"_s, u"a will appear"_s}));
        QTRY_VERIFY(!isFading());
        QCOMPARE(notes(), (QStringList{u"b did disappear"_s, u"a did appear"_s}));
        QCOMPARE(subviews(), views({m_c, m_a}));
        QCOMPARE(seen(), QColor(Qt::red));
    }

    void twoChangesDuringOneFadeEndWithTheSelectedPane()
    {
        open();
        click(u"b"_s);
        click(u"a"_s);
        QCOMPARE(m_controller->currentPane(), m_a);
        QCOMPARE(subviews(), views({m_b, m_a}));
        QTRY_COMPARE(m_notes.size(), 8);
        // At both clicks the first pane was the lowest view, so it gets the messages of the hidden pane.
        QCOMPARE(notes(),
                 (QStringList{u"a will disappear"_s, u"b will appear"_s, u"a will disappear"_s, u"a will appear"_s,
                              u"a did disappear"_s, u"b did appear"_s, u"a did disappear"_s, u"a did appear"_s}));
        QCOMPARE(m_controller->currentPane(), m_a);
        QCOMPARE(m_controller->toolbar().selectedItemIdentifier(), u"a"_s);
        QVERIFY(button(u"a"_s)->isChecked());
        QCOMPARE(subviews(), views({m_b, m_a}));
        QVERIFY(m_a->paneView()->isVisible());
        QVERIFY(!m_b->paneView()->isVisible());
        QCOMPARE(seen(), QColor(Qt::red));

        // The next change removes the second pane.
        click(u"c"_s);
        QTRY_VERIFY(!isFading());
        QCOMPARE(subviews(), views({m_a, m_c}));
        QCOMPARE(seen(), QColor(Qt::green));
    }

    void theShownPaneIsTheCurrentOneAfterAnyQuickClicks_data()
    {
        QTest::addColumn<QStringList>("clicks");
        for (const auto* const clicks : {"b a", "b a b", "b a c", "b a b a", "b c a", "b c b", "b c b a", "b c a c b"})
            QTest::newRow(clicks) << QString::fromLatin1(clicks).split(u' ');
    }
    void theShownPaneIsTheCurrentOneAfterAnyQuickClicks()
    {
        QFETCH(const QStringList, clicks);
        open();
        for (const QString& identifier : clicks)
            click(identifier);
        QTRY_VERIFY(!isFading());
        QCOMPARE(m_controller->currentPane()->paneIdentifier(), clicks.constLast());
        QCOMPARE(subviews().constLast(), m_controller->currentPane()->paneView());
        QVERIFY(m_controller->currentPane()->paneView()->isVisible());
    }

    void aPaneThatIsShownAgainInAnEmptiedWindowStays()
    {
        open();
        click(u"b"_s);
        m_controller->showPane(nullptr);
        m_controller->showPane(m_a);
        QTRY_VERIFY(!isFading());
        QCOMPARE(subviews(), views({m_a}));
        QVERIFY(m_a->paneView()->isVisible());
    }

    void showingANullPaneEmptiesTheWindowAndKeepsTheSelection()
    {
        open();
        m_controller->showPane(nullptr);
        QVERIFY(subviews().isEmpty());
        QVERIFY(!m_controller->currentPane());
        QCOMPARE(m_controller->toolbar().selectedItemIdentifier(), u"a"_s);
        QVERIFY(button(u"a"_s)->isChecked());
        QCOMPARE(notes(), QStringList());
        // An empty window shows a pane without a fade.
        m_controller->showPane(m_b);
        QCOMPARE(notes(), (QStringList{u"b will appear"_s, u"b did appear"_s}));
        QVERIFY(!isFading());
    }

    void aWindowEmptiedDuringAFadeStaysEmpty()
    {
        open();
        click(u"b"_s);
        m_controller->showPane(nullptr);
        QTRY_VERIFY(!isFading());
        QVERIFY(subviews().isEmpty());
        QVERIFY(!m_controller->currentPane());
    }

    void aPaneThatIsNotRegisteredIsNotShown()
    {
        open();
        RecordingPane stranger(u"d"_s, m_notes);
        m_controller->showPane(&stranger);
        QCOMPARE(m_controller->currentPane(), m_a);
        QCOMPARE(subviews(), views({m_a}));
        QCOMPARE(notes(), QStringList());
    }

    void beforeTheWindowIsLoadedNoPaneIsShown()
    {
        RecordingPane* a = pane(u"a"_s);
        notes();
        m_controller->showPane(a);
        QVERIFY(!m_controller->currentPane());
        QCOMPARE(notes(), QStringList());
    }

    void choosingNullOrAnUnknownItemChangesNothing()
    {
        open();
        QAction unknown;
        unknown.setData(u"d"_s);
        m_controller->selectPane(nullptr);
        m_controller->selectPane(&unknown);
        QCOMPARE(m_controller->currentPane(), m_a);
        QCOMPARE(notes(), QStringList());
        QAction known;
        known.setData(u"c"_s);
        m_controller->selectPane(&known);
        QCOMPARE(m_controller->currentPane(), m_c);
    }

    void aPaneRequestedBeforeTheWindowOpensIsShownAfterTheFirst()
    {
        pane(u"a"_s);
        RecordingPane* b = pane(u"b"_s);
        notes();
        m_controller->showPaneWithIdentifier(u"b");
        QVERIFY(m_controller->window()->isVisible());
        QCOMPARE(notes(), (QStringList{u"a will appear"_s, u"a did appear"_s}));
        QTRY_COMPARE(m_controller->currentPane(), b);
        QVERIFY(isFading());
        QCOMPARE(notes(), (QStringList{u"a will disappear"_s, u"b will appear"_s}));
        QTRY_VERIFY(!isFading());
        QCOMPARE(notes(), (QStringList{u"a did disappear"_s, u"b did appear"_s}));
    }

    void requestingAnUnknownPaneKeepsTheCurrentOne()
    {
        open();
        m_controller->hide();
        m_controller->showPaneWithIdentifier(u"d");
        QCoreApplication::processEvents();
        QVERIFY(m_controller->window()->isVisible());
        QCOMPARE(m_controller->currentPane(), m_a);
        QCOMPARE(notes(), QStringList());
    }

    void aPaneWithoutTheOptionalMessagesIsShownAndReplaced()
    {
        const auto silent = std::make_shared<SilentPane>();
        m_controller->resigterPreferencesPane(silent);
        RecordingPane* b = pane(u"b"_s);
        m_controller->show();
        QCOMPARE(m_controller->currentPane(), silent.get());
        click(u"b"_s);
        QTRY_VERIFY(!isFading());
        QCOMPARE(subviews(), views({b}));
        click(u"silent"_s);
        QTRY_VERIFY(!isFading());
        QCOMPARE(subviews(), QList<QWidget*>{silent->paneView()});
    }

    void aWindowDeletedDuringAFadeDoesNotDeletePanes()
    {
        const auto a = std::make_shared<RecordingPane>(u"a"_s, m_notes);
        const auto b = std::make_shared<RecordingPane>(u"b"_s, m_notes);
        m_controller->resigterPreferencesPane(a);
        m_controller->resigterPreferencesPane(b);
        m_controller->show();
        click(u"b"_s);
        notes();
        m_controller.reset();
        QCOMPARE(a->paneView()->parentWidget(), nullptr);
        QCOMPARE(b->paneView()->parentWidget(), nullptr);
        QCOMPARE(notes(), QStringList());
    }
};

template class RunnableTests<tst_PaneChanges, QApplication>;
#include "tst_panechanges.moc"
