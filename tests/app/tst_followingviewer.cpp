#include "attestation/viewer/MVNewAttestationView.h"
#include "tests/app/Office.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QPointer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QRect smallScreen(0, 0, 1366, 768);
const QRect largeScreen(0, 0, 1920, 1080);
constexpr QSize viewerSize(615, 740);
const QRect centredViewer(375, 14, 615, 740);

} // namespace

/// The attestation's window beside the main one.
class tst_FollowingViewer : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aViewerIsPlacedBesideTheMainWindow_data()
    {
        QTest::addColumn<QRect>("main");
        QTest::addColumn<QRect>("viewer");
        QTest::addColumn<QRect>("screen");
        QTest::addColumn<int>("left");
        QTest::newRow("small screen") << QRect(378, 139, 610, 490) << centredViewer << smallScreen << 751;
        QTest::newRow("large screen") << QRect(655, 295, 610, 490) << QRect(QPoint(652, 90), viewerSize) << largeScreen
                                      << 1265;
        QTest::newRow("main window at the right")
            << QRect(700, 139, 610, 490) << QRect(QPoint(700, 14), viewerSize) << smallScreen << 85;
        QTest::newRow("half is visible") << QRect(0, 139, 610, 490) << centredViewer << smallScreen << 375;
        QTest::newRow("larger main window") << QRect(0, 0, 1366, 768) << centredViewer << smallScreen << 375;
        QTest::newRow("second screen") << QRect(1366 + 378, 139, 610, 490) << centredViewer.translated(1366, 0)
                                       << smallScreen.translated(1366, 0) << 1366 + 751;
    }

    void aViewerIsPlacedBesideTheMainWindow()
    {
        QFETCH(const QRect, main);
        QFETCH(const QRect, viewer);
        QFETCH(const QRect, screen);
        QTEST(leftBeside(main, viewer, screen), "left");
    }

    void shortcutsOfTheMainWindowWorkInTheViewer()
    {
        const auto office = Office::bound(Office::simulation(Office::specimen()));
        QVERIFY(office);
        office->delegate->viewAttestation();
        const QMainWindow* viewer = office->viewer();
        QTRY_VERIFY(viewer->isVisible());
        QCOMPARE(viewer->windowTitle(), u"Hélène SPECIMEN"_s);
        QStringList missing;
        for (const QAction* action : office->window->findChildren<QAction*>()) {
            QList<QAction*> there = viewer->actions() + viewer->findChildren<QAction*>();
            const bool isThere = std::ranges::any_of(
                there, [action](const QAction* other) { return other->shortcuts().contains(action->shortcut()); });
            if (!action->shortcut().isEmpty() && !isThere)
                missing.append(action->text());
        }
        QCOMPARE(missing, QStringList());
        // A shortcut that is set twice is ambiguous and does nothing.
        const auto ofPrint = [](const QAction* action) { return action->shortcut() == QKeySequence(u"Ctrl+P"_s); };
        QCOMPARE(std::ranges::count_if(viewer->actions() + viewer->findChildren<QAction*>(), ofPrint), 1);
    }

    void theViewersMenuCopiesTheNumberOrTheNameUntilTheEnd()
    {
        auto office = Office::bound(Office::simulation(Office::specimen()));
        QVERIFY(office);
        QGuiApplication::clipboard()->clear();
        office->window->findChild<QAction*>(u"copyNumberAction"_s)->trigger();
        QCOMPARE(office->notice(), u"Il n’y a rien à copier. Lisez d’abord une carte."_s);
        QCOMPARE(QGuiApplication::clipboard()->text(), QString());

        LogCapture log;
        office->delegate->viewAttestation();
        QTRY_VERIFY(office->viewer()->isVisible());
        auto* page = office->viewer()->findChild<MVNewAttestationView*>();
        const auto choose = [page](Qt::Key key) {
            QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5), page->mapToGlobal(QPoint(5, 5)));
            QApplication::sendEvent(page, &event);
            const QPointer<QMenu> menu = page->window()->findChild<QMenu*>();
            if (!menu || !menu->isVisible())
                return false;
            QTest::keyClick(menu, key);
            return QTest::qWaitFor([&menu] { return !menu; });
        };
        QVERIFY(choose(Qt::Key_O));
        QCOMPARE(QGuiApplication::clipboard()->text(), u"SPECIMEN Hélène"_s);
        QCOMPARE(office->notice(), u"Nom copié pour une minute."_s);
        QVERIFY(choose(Qt::Key_N));
        QCOMPARE(QGuiApplication::clipboard()->text(), u"285057511612381"_s);
        QCOMPARE(office->notice(), u"Numéro copié pour une minute."_s);
        for (const QString& line : log.lines())
            QVERIFY2(!line.contains(u"SPECIMEN") && !line.contains(u"285057511612381"), qPrintable(line));
        office.reset();
        QCOMPARE(QGuiApplication::clipboard()->text(), QString());
    }
};

template class RunnableTests<tst_FollowingViewer, QApplication>;
#include "tst_followingviewer.moc"
