#include "attestation/page/SchemeLogos.h"
#include "attestation/print/PrintDesk.h"
#include "attestation/print/PrintDialog.h"
#include "attestation/print/PrintOperation.h"
#include "attestation/viewer/MVAttestationWindowController.h"
#include "attestation/viewer/MVClipView.h"
#include "attestation/viewer/MVNewAttestationView.h"
#include "attestation/viewer/MVScrollView.h"
#include "card/CardKeys.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QAction>
#include <QApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QStyle>
#include <QTemporaryDir>
#include <QTest>
#include <QToolBar>
#include <QToolButton>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

CardRecord cardOf(std::optional<QString> firstName, std::optional<QString> lastName)
{
    CardRecord card;
    card.setBeneficiaries({person(u"SPECIMEN"_s, u"Zoé"_s)});
    if (firstName)
        card.setText(CardKey::firstName, *firstName);
    if (lastName)
        card.setText(CardKey::lastName, *lastName);
    return card;
}

} // namespace

class tst_MVAttestationWindowController : public TestCase
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    TemporarySettings m_settings;
    SchemeLogos m_logos{stagedBundle()};
    PageFonts m_fonts = pageFonts();
    std::unique_ptr<PrintDesk> m_printDesk;
    std::unique_ptr<MVAttestationWindowController> m_viewer;

    [[nodiscard]] QMainWindow* window() const { return m_viewer->window(); }
    [[nodiscard]] QAction* action(const QString& name) const { return window()->findChild<QAction*>(name); }
    [[nodiscard]] QToolBar* bar() const { return window()->findChild<QToolBar*>(); }
    [[nodiscard]] MVClipView* clipView() const
    {
        return qobject_cast<MVClipView*>(m_viewer->scrollView()->contentView());
    }
    [[nodiscard]] MVNewAttestationView* page() const
    {
        return qobject_cast<MVNewAttestationView*>(m_viewer->scrollView()->documentView());
    }

    bool show()
    {
        m_viewer->showWindow(nullptr);
        return QTest::qWaitForWindowActive(window());
    }

private Q_SLOTS:
    // No print server is used.
    void initTestCase() { qputenv("CUPS_SERVER", QFile::encodeName(m_folder.filePath(u"cups.sock"_s))); }

    void init()
    {
        m_viewer.reset();
        m_printDesk = std::make_unique<PrintDesk>(m_settings.store(), m_logos, m_fonts,
                                                  stagedBundle().pathForProgram(u"pelmora-print"_s));
        m_viewer = std::make_unique<MVAttestationWindowController>(m_settings.store(), m_logos, m_fonts, *m_printDesk);
    }

    void theWindowIsLoadedAndHidden()
    {
        QVERIFY(window() != nullptr);
        QVERIFY(!window()->isVisible());
        QCOMPARE(m_viewer->scrollView(), window()->centralWidget());
        QVERIFY(clipView() != nullptr);
        QVERIFY(page() != nullptr);
        QCOMPARE(window()->windowTitle(), u"Attestation"_s);
    }

    void theWindowShowsTheViewOfTheAttestation()
    {
        m_viewer->setVitale(specimenCard(3));
        QCOMPARE(page()->page().lines.size(), 3);
        QCOMPARE(m_viewer->attestation().page().lines.size(), 3);
        QVERIFY(m_viewer->vitale() == specimenCard(3));
        m_viewer->setVitale(specimenCard(1));
        QCOMPARE(page()->page().lines.size(), 1);
    }

    void theTitleHasTheFirstNameFirstAndThePageTheSurname()
    {
        m_viewer->setVitale(cardOf(u"Marie"_s, u"Martin"_s));
        QCOMPARE(window()->windowTitle(), u"Marie Martin"_s);
        QCOMPARE(page()->page().insuredName, u"Martin Marie"_s);
    }

    void aMissingNameIsShownAsSuch()
    {
        m_viewer->setVitale(cardOf(std::nullopt, u"Martin"_s));
        QCOMPARE(window()->windowTitle(), u"(null) Martin"_s);
        m_viewer->setVitale(cardOf(u"Marie"_s, std::nullopt));
        QCOMPARE(window()->windowTitle(), u"Marie (null)"_s);
        m_viewer->setVitale(cardOf(u""_s, u""_s));
        QCOMPARE(window()->windowTitle(), u" "_s);
    }

    void theWindowFitsThePageWithTenPointsAroundItOrTheScreen()
    {
        QVERIFY(show());
        const QRect available = window()->screen()->availableGeometry();
        QCOMPARE(m_viewer->scrollView()->width(), 615);
        QVERIFY(bar()->height() > 0 && bar()->height() <= 40);
        const int titleBar = window()->style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, window());
        QCOMPARE(m_viewer->scrollView()->height(), qMin(862, available.height() - titleBar - bar()->height()));
        const QPoint off = window()->frameGeometry().center() - available.center();
        QVERIFY2(qAbs(off.x()) <= 5 && qAbs(off.y()) <= 30, qPrintable(u"%1, %2"_s.arg(off.x()).arg(off.y())));
    }

    void thePageIsOneToOneInAWindowOfItsSize()
    {
        QVERIFY(show());
        window()->resize(window()->size() + QSize(0, 862 - m_viewer->scrollView()->height()));
        QCOMPARE(m_viewer->scrollView()->size(), QSize(615, 862));
        QCOMPARE(clipView()->scale(), QSizeF(1, 1));
        QCOMPARE(page()->geometry(), QRect(10, 10, 595, 842));
    }

    void theWindowCanBeMadeSmall()
    {
        QVERIFY(show());
        window()->resize(200, 200);
        QCOMPARE(window()->size(), QSize(200, 200));
        QVERIFY(clipView()->scale().width() < 0.25);
        QVERIFY(clipView()->rect().contains(page()->geometry()));
    }

    void theToolBarsActionsHaveTheirTitlesAndShortcuts()
    {
        QCOMPARE(bar()->actions(),
                 QList({action(u"printAction"_s), action(u"saveAction"_s), action(u"closeAction"_s)}));
        QStringList names;
        for (QAction* item : bar()->actions())
            names.append(qobject_cast<QToolButton*>(bar()->widgetForAction(item))->text());
        QCOMPARE(names, QStringList({u"Imprimer"_s, u"Enregistrer"_s, u"Fermer"_s}));
        QCOMPARE(action(u"saveAction"_s)->shortcuts(), QList({QKeySequence(u"Ctrl+S"_s)}));
        QCOMPARE(action(u"saveAction"_s)->toolTip(), u"Enregistrer l’attestation (Ctrl+S)"_s);
        QCOMPARE(action(u"printAction"_s)->shortcuts(), QList({QKeySequence(u"Ctrl+P"_s)}));
        QCOMPARE(action(u"closeAction"_s)->shortcuts(), QList({QKeySequence(u"Ctrl+W"_s), QKeySequence(u"Esc"_s)}));
        QCOMPARE(action(u"closeAction"_s)->toolTip(), u"Fermer la fenêtre (Ctrl+W ou Échap)"_s);
        QCOMPARE(action(u"printAction"_s)->toolTip(), u"Imprimer l’attestation (Ctrl+P)"_s);
    }

    void tabMovesTheFocusFromThePageToTheToolBar()
    {
        QVERIFY(show());
        QVERIFY(page()->hasFocus());
        QTest::keyClick(window(), Qt::Key_Tab);
        QTRY_COMPARE(QApplication::focusWidget(), bar()->widgetForAction(action(u"printAction"_s)));
    }

    void theKeysAndTheButtonRequestSaving()
    {
        m_viewer->setVitale(specimenCard(2));
        QVERIFY(show());
        const QSignalSpy requests(m_viewer.get(), &MVAttestationWindowController::saveRequested);
        QTest::keySequence(window(), QKeySequence(u"Ctrl+S"_s));
        QCOMPARE(requests.size(), 1);
        QTest::mouseClick(bar()->widgetForAction(action(u"saveAction"_s)), Qt::LeftButton);
        QCOMPARE(requests.size(), 2);
    }

    void theKeysAndTheButtonPrint_data()
    {
        QTest::addColumn<std::function<void(MVAttestationWindowController&)>>("way");
        const auto addWay = [](const char* name, std::function<void(MVAttestationWindowController&)> way) {
            QTest::newRow(name) << std::move(way);
        };
        addWay("keys", [](auto& viewer) { QTest::keySequence(viewer.window(), QKeySequence(u"Ctrl+P"_s)); });
        addWay("button",
               [](auto& viewer) { viewer.window()->template findChild<QAction*>(u"printAction"_s)->trigger(); });
        addWay("operation", [](auto& viewer) { viewer.printAttestation(nullptr); });
    }

    void theKeysAndTheButtonPrint()
    {
        QFETCH(const std::function<void(MVAttestationWindowController&)>, way);
        m_viewer->setVitale(specimenCard(2));
        QVERIFY(show());
        QCOMPARE(window()->findChildren<PrintOperation*>().size(), 0);
        way(*m_viewer);
        QCOMPARE(window()->findChildren<PrintOperation*>().size(), 1);
    }

    void withoutPermissionNothingIsPrinted()
    {
        m_printDesk->setPermission([] { return false; });
        m_viewer->setVitale(specimenCard(2));
        m_viewer->printAttestation(nullptr);
        QCOMPARE(window()->findChildren<PrintOperation*>().size(), 0);
        QVERIFY(!m_printDesk->isAsking());
    }

    void aCardSetDuringThePermissionIsPrinted()
    {
        m_viewer->setVitale(cardOf(u"Marie"_s, u"Martin"_s));
        m_printDesk->setPermission([this] {
            m_viewer->setVitale(cardOf(u"Jean"_s, u"Durand"_s));
            return true;
        });
        m_viewer->printAttestation(nullptr);
        const auto dialog = [this] { return window()->findChild<PrintDialog*>(); };
        QTRY_VERIFY(dialog() != nullptr);
        QVERIFY(dialog()->windowTitle().endsWith(u"Durand Jean"_s));
    }

    void keysCloseTheWindowAndItCanBeShownAgain_data()
    {
        QTest::addColumn<QKeySequence>("keys");
        QTest::newRow("Ctrl+W") << QKeySequence(u"Ctrl+W"_s);
        QTest::newRow("Escape") << QKeySequence(u"Esc"_s);
    }

    void keysCloseTheWindowAndItCanBeShownAgain()
    {
        QFETCH(const QKeySequence, keys);
        QVERIFY(show());
        QTest::keySequence(window(), keys);
        QVERIFY(!window()->isVisible());
        m_viewer->setVitale(specimenCard(2));
        QVERIFY(show());
        QVERIFY(window()->isVisible());
        QCOMPARE(window()->windowTitle(), u"Marie SPECIMEN"_s);
    }

    void aHiddenOrIconifiedWindowIsShown()
    {
        QVERIFY(show());
        window()->showMinimized();
        QVERIFY(show());
        QVERIFY(!window()->isMinimized());
        window()->showMaximized();
        QVERIFY(show());
        QVERIFY(window()->isMaximized());
    }

    void thePageHasTheKeyboardFocus()
    {
        QVERIFY(show());
        QCOMPARE(QApplication::focusWidget(), page());
    }

    void theSizeSetByTheUserIsKept()
    {
        QVERIFY(show());
        window()->resize(400, 500);
        window()->close();
        m_viewer->setVitale(specimenCard(1));
        QVERIFY(show());
        QCOMPARE(window()->size(), QSize(400, 500));
    }
};

template class RunnableTests<tst_MVAttestationWindowController, QApplication>;
#include "tst_mvattestationwindowcontroller.moc"
