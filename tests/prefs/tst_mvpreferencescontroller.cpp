#include "tests/common/RunnableTests.h"
#include "tests/prefs/ControllerTest.h"

#include <QApplication>
#include <QMainWindow>

using namespace Qt::StringLiterals;

class tst_MVPreferencesController final : public ControllerTest
{
    Q_OBJECT

private Q_SLOTS:
    void beforeAPaneOrTheWindowNothingExists()
    {
        QVERIFY(m_controller->panes().empty());
        QVERIFY(!m_controller->currentPane());
        QVERIFY(!m_controller->window());
        QVERIFY(!m_controller->contentView());
        QCOMPARE(m_controller->toolbar().objectName(), u"main.toolbar"_s);
        m_controller->hide();
        QVERIFY(!m_controller->window());
    }

    void withoutPanesTheWindowIsEmpty()
    {
        m_controller->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_controller->window()));
        QCOMPARE(m_controller->contentView()->size(), QSize(500, 280));
        QVERIFY(subviews().isEmpty());
        QVERIFY(m_controller->toolbar().actions().isEmpty());
        QVERIFY(!m_controller->currentPane());
    }

    void theWindowHasItsTitleAndOneSize()
    {
        pane(u"a"_s);
        m_controller->show();
        QMainWindow& window = *m_controller->window();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(window.windowTitle(), u"Préférences Pelmora"_s);
        QCOMPARE(m_controller->contentView()->minimumSize(), QSize(500, 280));
        QCOMPARE(m_controller->contentView()->maximumSize(), QSize(500, 280));
        QCOMPARE(m_controller->contentView()->size(), QSize(500, 280));
        QCOMPARE(window.minimumSize(), window.maximumSize());
        QCOMPARE(window.size(), QSize(500, 280 + m_controller->toolbar().height()));
        QCOMPARE(subviews().constFirst()->geometry(), QRect(0, 0, 500, 280));
    }

    void registeringAPaneTwiceGivesOneButtonAndOnePreparation()
    {
        const auto twice = std::make_shared<RecordingPane>(u"a"_s, m_notes);
        m_controller->resigterPreferencesPane(twice);
        m_controller->resigterPreferencesPane(twice);
        QCOMPARE(notes(), QStringList{u"a initialization"_s});
        QCOMPARE(m_controller->panes().size(), std::size_t{1});
        m_controller->show();
        QCOMPARE(m_controller->toolbar().itemIdentifiers(), QStringList{u"a"_s});
        m_controller->resigterPreferencesPane(twice);
        QCOMPARE(m_controller->toolbar().actions().size(), 1);
        QCOMPARE(notes(), (QStringList{u"a will appear"_s, u"a did appear"_s}));
    }

    void aNullPaneIsNotRegistered()
    {
        m_controller->resigterPreferencesPane(nullptr);
        QVERIFY(m_controller->panes().empty());
    }

    void registeringShowsNothingBeforeTheWindowIsLoaded()
    {
        pane(u"a"_s);
        pane(u"b"_s);
        QCOMPARE(notes(), (QStringList{u"a initialization"_s, u"b initialization"_s}));
        QVERIFY(!m_controller->currentPane());
        QVERIFY(!m_controller->window());
    }

    void unregisteringChangesNothing()
    {
        RecordingPane* a = pane(u"a"_s);
        pane(u"b"_s);
        RecordingPane stranger(u"c"_s, m_notes);
        m_controller->show();
        notes();
        m_controller->unregisterPreferencesPane(a);
        m_controller->unregisterPreferencesPane(&stranger);
        m_controller->unregisterPreferencesPane(nullptr);
        m_controller->removePane(a);
        QCOMPARE(notes(), QStringList());
        QCOMPARE(m_controller->panes().size(), std::size_t{2});
        QCOMPARE(m_controller->toolbar().itemIdentifiers(), (QStringList{u"a"_s, u"b"_s}));
        QCOMPARE(m_controller->currentPane(), a);
    }

    void identifiersAreThoseOfTheFirstRequest()
    {
        pane(u"a"_s);
        pane(u"b"_s);
        QCOMPARE(m_controller->identifiers(), (QStringList{u"a"_s, u"b"_s}));
        RecordingPane* late = pane(u"c"_s);
        QCOMPARE(m_controller->identifiers(), (QStringList{u"a"_s, u"b"_s}));
        m_controller->show();
        QCOMPARE(m_controller->toolbar().itemIdentifiers(), (QStringList{u"a"_s, u"b"_s}));
        QCOMPARE(m_controller->paneForIdentifier(u"c"), late);
        m_controller->showPane(late);
        QCOMPARE(m_controller->currentPane(), late);
    }

    void aPaneRegisteredInAnEmptyWindowIsShownWithoutAButton()
    {
        m_controller->show();
        RecordingPane* a = pane(u"a"_s);
        QCOMPARE(notes(), (QStringList{u"a initialization"_s, u"a will appear"_s, u"a did appear"_s}));
        QCOMPARE(m_controller->currentPane(), a);
        QVERIFY(m_controller->toolbar().actions().isEmpty());
        QVERIFY(m_controller->toolbar().isVisible());
    }

    void aPaneRegisteredAfterTheFirstIsNotShown()
    {
        RecordingPane* a = pane(u"a"_s);
        m_controller->show();
        notes();
        pane(u"b"_s);
        QCOMPARE(notes(), QStringList{u"b initialization"_s});
        QCOMPARE(m_controller->currentPane(), a);
        QCOMPARE(m_controller->toolbar().itemIdentifiers(), QStringList{u"a"_s});
    }

    void theWindowOpensOnTheFirstPane()
    {
        RecordingPane* a = pane(u"a"_s);
        pane(u"b"_s);
        notes();
        m_controller->show();
        QCOMPARE(notes(), (QStringList{u"a will appear"_s, u"a did appear"_s}));
        QCOMPARE(m_controller->currentPane(), a);
        QCOMPARE(subviews(), QList<QWidget*>{a->paneView()});
        QVERIFY(a->paneView()->isVisible());
        QCOMPARE(m_controller->toolbar().selectedItemIdentifier(), u"a"_s);
        QVERIFY(button(u"a"_s)->isChecked());
        QVERIFY(!isFading());
    }

    void closedAndOpenedAgainTheWindowKeepsItsPane_data()
    {
        QTest::addColumn<bool>("isClosed");
        QTest::newRow("hidden") << false;
        QTest::newRow("closed") << true;
    }
    void closedAndOpenedAgainTheWindowKeepsItsPane()
    {
        QFETCH(const bool, isClosed);
        pane(u"a"_s);
        RecordingPane* b = pane(u"b"_s);
        m_controller->show();
        const QMainWindow* window = m_controller->window();
        click(u"b"_s);
        QTRY_VERIFY(!isFading());
        notes();
        if (isClosed)
            QVERIFY(m_controller->window()->close());
        else
            m_controller->hide();
        QVERIFY(!window->isVisible());
        QCOMPARE(m_controller->currentPane(), b);
        m_controller->show();
        QCOMPARE(m_controller->window(), window);
        QVERIFY(window->isVisible());
        QVERIFY(b->paneView()->isVisible());
        QCOMPARE(m_controller->currentPane(), b);
        QCOMPARE(notes(), QStringList());
    }

    void showingRestoresAnIconifiedWindow()
    {
        pane(u"a"_s);
        m_controller->show();
        m_controller->window()->showMinimized();
        m_controller->show();
        QVERIFY(!m_controller->window()->isMinimized());
        QVERIFY(QTest::qWaitForWindowActive(m_controller->window()));
    }

    void keysCloseTheWindow_data()
    {
        QTest::addColumn<QKeySequence>("keys");
        QTest::newRow("Escape") << QKeySequence(Qt::Key_Escape);
        QTest::newRow("Ctrl+W") << QKeySequence(Qt::CTRL | Qt::Key_W);
    }
    void keysCloseTheWindow()
    {
        QFETCH(const QKeySequence, keys);
        pane(u"a"_s);
        m_controller->show();
        QVERIFY(QTest::qWaitForWindowActive(m_controller->window()));
        QTest::keySequence(m_controller->window(), keys);
        QVERIFY(!m_controller->window()->isVisible());
    }

    void keysGoFromPaneToPane()
    {
        for (const QString& name : {u"a"_s, u"b"_s, u"c"_s})
            pane(name);
        m_controller->show();
        QVERIFY(QTest::qWaitForWindowActive(m_controller->window()));
        const auto afterKeys = [this](const QString& keys) {
            QTest::keySequence(m_controller->window(), QKeySequence(keys));
            return m_controller->currentPane()->paneIdentifier();
        };
        QCOMPARE(afterKeys(u"Ctrl+Tab"_s), u"b"_s);
        QCOMPARE(m_controller->toolbar().selectedItemIdentifier(), u"b"_s);
        // Screen readers announce the focused button.
        QCOMPARE(QApplication::focusWidget(), button(u"b"_s));
        QCOMPARE(afterKeys(u"Ctrl+Tab"_s), u"c"_s);
        QCOMPARE(afterKeys(u"Ctrl+Tab"_s), u"a"_s);
        QCOMPARE(afterKeys(u"Ctrl+Shift+Tab"_s), u"c"_s);
    }

    void panesAreFoundByTheirOwnViewAndTheFirstOfAnIdentifier()
    {
        RecordingPane* a = pane(u"a"_s);
        RecordingPane* b = pane(u"b"_s);
        pane(u"a"_s);
        const QWidget stranger;
        QCOMPARE(m_controller->paneForView(b->paneView()), b);
        QCOMPARE(m_controller->paneForView(&stranger), nullptr);
        QCOMPARE(m_controller->paneForView(nullptr), nullptr);
        QCOMPARE(m_controller->paneForIdentifier(u"a"), a);
        QCOMPARE(m_controller->paneForIdentifier(u"A"), nullptr);
        QCOMPARE(m_controller->paneForIdentifier({}), nullptr);
    }

    void aNullPaneReceivesNoMessage()
    {
        constexpr std::array messages{&MVPreferencesController::paneWillAppear, &MVPreferencesController::paneDidAppear,
                                      &MVPreferencesController::paneWillDisappear,
                                      &MVPreferencesController::paneDidDisappear};
        const QStringList names{u"will appear"_s, u"did appear"_s, u"will disappear"_s, u"did disappear"_s};
        RecordingPane a(u"a"_s, m_notes);
        for (std::size_t index = 0; index < messages.size(); ++index) {
            messages.at(index)(nullptr);
            QCOMPARE(notes(), QStringList());
            messages.at(index)(&a);
            QCOMPARE(notes(), QStringList{u"a "_s + names.at(static_cast<qsizetype>(index))});
        }
    }

    void thePanesKeepTheirViews()
    {
        const auto kept = std::make_shared<RecordingPane>(u"a"_s, m_notes);
        m_controller->resigterPreferencesPane(kept);
        m_controller->show();
        m_controller.reset();
        QCOMPARE(kept->paneView()->parentWidget(), nullptr);
    }
};

template class RunnableTests<tst_MVPreferencesController, QApplication>;
#include "tst_mvpreferencescontroller.moc"
