#include "app/models/StatusMenu.h"
#include "attestation/print/PrintDialog.h"
#include "attestation/print/PrintOperation.h"
#include "tests/app/Office.h"
#include "tests/app/windows/Dragging.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QHash>
#include <QLabel>
#include <QMainWindow>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

const FakeScript slowBind = FakeScript().doing("init", "slow");

const QString refusedWhileReading = u"Demande refusée pendant la lecture d’une carte."_s;
const QString refusedWhilePrinting =
    u"Demande refusée pendant l’impression\u00A0: confirmez ou annulez d’abord celle-ci."_s;

// A way to request a card or its page.
using Way = std::function<void(const Office&, const QString&)>;

// Records events of one type for each of several objects.
class EventOrder final : public QObject
{
public:
    void watch(QObject& object, QEvent::Type type)
    {
        m_watched[&object] = type;
        object.installEventFilter(this);
    }

    [[nodiscard]] const QList<QEvent::Type>& types() const { return m_types; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == m_watched.value(watched))
            m_types.append(event->type());
        return QObject::eventFilter(watched, event);
    }

private:
    QHash<QObject*, QEvent::Type> m_watched;
    QList<QEvent::Type> m_types;
};

void printFromViewer(const Office& office)
{
    office.viewer()->findChild<QAction*>(u"printAction"_s)->trigger();
}

PrintDialog* dialog()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* found = qobject_cast<PrintDialog*>(widget);
        if (found != nullptr && found->isVisible())
            return found;
    }
    return nullptr;
}

} // namespace

// The printed card is the shown one, and no other card replaces it during a read or a print.
class tst_AppDelegateCards : public TestCase
{
    Q_OBJECT

private:
    // The specimen card's file with another first name.
    [[nodiscard]] QString cardOf(const QString& firstName) const
    {
        const QString card = m_folder.filePath(firstName + u".xml"_s);
        const QByteArray specimen = contentOf(Office::specimen());
        return writeFile(card, QByteArray(specimen).replace("Hélène", firstName.toUtf8())) ? card : QString();
    }

    // An office whose card service is bound, with the card of Alix.
    [[nodiscard]] std::unique_ptr<Office> officeOfAlix(const FakeScript& script = {}) const
    {
        auto office = Office::bound(script);
        if (office)
            office->delegate->loadXMLFile(cardOf(u"Alix"_s));
        return office;
    }

    static void addWays()
    {
        QTest::addColumn<Way>("way");
        QTest::newRow("file") << Way(
            [](const Office& office, const QString& path) { office.delegate->loadXMLFile(path); });
        QTest::newRow("file panel") << Way(
            [](const Office& office, const QString&) { office.delegate->loadXMLFile(); });
    }

    QTemporaryDir m_folder;

private Q_SLOTS:
    // No print server is used.
    void initTestCase() { qputenv("CUPS_SERVER", QFile::encodeName(m_folder.filePath(u"cups.sock"_s))); }

    void whileThePrintDialogIsOpenNoOtherCardIsTaken_data()
    {
        addWays();
        QTest::newRow("read") << Way(
            [](const Office& office, const QString&) { office.delegate->readVitale(office.window.get()); });
        for (int tag = StatusMenu::ReadTag; tag <= StatusMenu::SaveTag; ++tag)
            QTest::addRow("status menu %d", tag)
                << Way([tag](const Office& office, const QString&) { office.chooseFromStatusMenu(tag); });
    }

    void whileThePrintDialogIsOpenNoOtherCardIsTaken()
    {
        QFETCH(const Way, way);
        const auto office = officeOfAlix();
        QVERIFY(office);
        office->delegate->viewAttestation();
        printFromViewer(*office);
        QTRY_VERIFY(dialog());
        const QString before = office->summary();

        way(*office, cardOf(u"Zoé"_s));
        QCOMPARE(office->notice(), refusedWhilePrinting);
        QCOMPARE(office->summary(), before);
        QCOMPARE(office->viewer()->windowTitle(), u"Alix SPECIMEN"_s);
        QVERIFY(!office->delegate->isReading());
        QVERIFY(office->window->findChild<QFileDialog*>() == nullptr);
        QVERIFY(!QFileInfo::exists(office->attestations()));
        QCOMPARE(dialog()->windowTitle(), u"Imprimer l’attestation – SPECIMEN Alix"_s);
        QTRY_COMPARE(QApplication::activeWindow(), dialog());

        dialog()->reject();
        office->delegate->loadXMLFile(cardOf(u"Zoé"_s));
        QVERIFY(office->summary().startsWith(u"SPECIMEN Zoé"_s));
        QCOMPARE(office->notice(), QString());
    }

    void aFileDroppedAfterAReadOrPrintBeganIsRefused_data()
    {
        using Meanwhile = std::function<void(const Office&)>;
        QTest::addColumn<Meanwhile>("meanwhile");
        QTest::addColumn<QString>("reason");
        QTest::newRow("request to print") << Meanwhile(printFromViewer) << refusedWhilePrinting;
        QTest::newRow("print dialog") << Meanwhile([](const Office& office) {
            printFromViewer(office);
            QVERIFY(QTest::qWaitFor([] { return dialog() != nullptr; }));
        }) << refusedWhilePrinting;
        QTest::newRow("read") << Meanwhile([](const Office& office) { office.delegate->readVitale(nullptr); })
                              << refusedWhileReading;
        QTest::newRow("alert") << Meanwhile([](const Office& office) {
            office.delegate->loadXMLFile(u"/absent.xml"_s);
            QVERIFY(QTest::qWaitFor([] { return Office::alert() != nullptr; }));
        }) << u"Fichier refusé\u00A0: fermez d’abord la fenêtre ouverte devant celle-ci."_s;
    }

    void aFileDroppedAfterAReadOrPrintBeganIsRefused()
    {
        QFETCH(const std::function<void(const Office&)>, meanwhile);
        QFETCH(const QString, reason);
        const auto office = officeOfAlix(silentRead);
        QVERIFY(office);
        QTRY_COMPARE(office->viewer()->windowTitle(), u"Alix SPECIMEN"_s);
        const DraggedFile card(cardOf(u"Zoé"_s));
        QVERIFY(acceptsDrag(*office->window, card));
        meanwhile(*office);
        drop(*office->window, card);
        QCOMPARE(office->notice(), reason);
        QVERIFY(office->summary().startsWith(u"SPECIMEN Alix"_s));
    }

    void afterAPrintRequestNoOtherCardIsTaken_data() { addWays(); }

    void afterAPrintRequestNoOtherCardIsTaken()
    {
        QFETCH(const Way, way);
        const auto office = officeOfAlix();
        QVERIFY(office);
        office->delegate->printAttestation();
        QVERIFY(!dialog());
        way(*office, cardOf(u"Zoé"_s));
        QCOMPARE(office->notice(), refusedWhilePrinting);
        QVERIFY(office->summary().startsWith(u"SPECIMEN Alix"_s));
        QVERIFY(office->window->findChild<QFileDialog*>() == nullptr);
    }

    void aRequestedWindowIsShownBehindThePrintDialog()
    {
        const auto office = officeOfAlix();
        QVERIFY(office);
        office->delegate->printAttestation();
        QTRY_VERIFY(dialog());
        office->delegate->showMainWindow();
        QTRY_COMPARE(QApplication::activeWindow(), dialog());
    }

    void whileOneWindowPrintsTheOtherCannot()
    {
        const auto office = officeOfAlix();
        QVERIFY(office);
        office->delegate->viewAttestation();
        printFromViewer(*office);
        office->delegate->printAttestation();
        QCOMPARE(office->window->findChildren<PrintOperation*>().size(), 0);
        QCOMPARE(office->viewer()->findChildren<PrintOperation*>().size(), 1);
        QCOMPARE(office->notice(), refusedWhilePrinting);
    }

    void aVisibleViewerShowsTheNewCardAtOnce()
    {
        const auto office = officeOfAlix();
        QVERIFY(office);
        office->delegate->viewAttestation();
        office->delegate->loadXMLFile(cardOf(u"Zoé"_s));
        QCOMPARE(office->viewer()->windowTitle(), u"Zoé SPECIMEN"_s);
    }

    void aHiddenViewerShowsTheNewCardSoonAfter()
    {
        const auto office = officeOfAlix();
        QVERIFY(office);
        QTRY_COMPARE(office->viewer()->windowTitle(), u"Alix SPECIMEN"_s);
        QVERIFY(!office->viewer()->isVisible());
    }

    void aHiddenViewerWaitsUntilTheSummaryIsPainted()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        QVERIFY(QTest::qWaitForWindowExposed(office->window.get()));
        QCoreApplication::processEvents();
        EventOrder order;
        order.watch(*office->window->vitaleInfoTextField(), QEvent::Paint);
        order.watch(*office->viewer(), QEvent::WindowTitleChange);
        office->delegate->loadXMLFile(cardOf(u"Alix"_s));
        QTRY_COMPARE(office->viewer()->windowTitle(), u"Alix SPECIMEN"_s);
        QCOMPARE(order.types(), (QList{QEvent::Paint, QEvent::WindowTitleChange}));
    }

    void aHiddenViewerPrintsTheNewCardAtOnce()
    {
        const auto office = officeOfAlix();
        QVERIFY(office);
        QTRY_COMPARE(office->viewer()->windowTitle(), u"Alix SPECIMEN"_s);
        office->delegate->loadXMLFile(cardOf(u"Zoé"_s));
        printFromViewer(*office);
        QTRY_VERIFY(dialog());
        QCOMPARE(dialog()->windowTitle(), u"Imprimer l’attestation – SPECIMEN Zoé"_s);
    }

    void theViewerShowsAReadCardAndAFailedReadDoesNotChangeIt()
    {
        const QString card = cardOf(u"Alix"_s);
        const auto office = Office::bound(Office::simulation(card));
        QVERIFY(office);
        office->delegate->viewAttestation();
        QTRY_VERIFY(office->viewer()->isVisible());
        QCOMPARE(office->viewer()->windowTitle(), u"Alix SPECIMEN"_s);

        QVERIFY(QFile::remove(card));
        QVERIFY(QFile::rename(cardOf(u"Zoé"_s), card));
        office->delegate->readVitale(nullptr);
        QTRY_VERIFY(office->summary().startsWith(u"SPECIMEN Zoé"_s));
        QCOMPARE(office->viewer()->windowTitle(), u"Zoé SPECIMEN"_s);

        QVERIFY(QFile::remove(card));
        office->delegate->readVitale(nullptr);
        QTRY_VERIFY(Office::alert());
        QCOMPARE(office->viewer()->windowTitle(), u"Zoé SPECIMEN"_s);
    }

    void whileACardIsReadNoFileIsOpened_data() { addWays(); }

    void whileACardIsReadNoFileIsOpened()
    {
        QFETCH(const Way, way);
        const auto office = Office::bound(silentRead);
        QVERIFY(office);
        office->delegate->readVitale(nullptr);
        QVERIFY(office->delegate->isReading());
        way(*office, cardOf(u"Zoé"_s));
        QCOMPARE(office->notice(), refusedWhileReading);
        QCOMPARE(office->summary(), u"Aucune"_s);
        QVERIFY(office->window->findChild<QFileDialog*>() == nullptr);
    }

    void whileAReadWaitsForTheBindNoFileIsOpened()
    {
        const Office office(silentRead.doing("init", "slow"));
        office.start();
        office.delegate->readVitale(nullptr);
        QVERIFY(!office.delegate->isReading());
        office.delegate->loadXMLFile(cardOf(u"Zoé"_s));
        QCOMPARE(office.notice(), refusedWhileReading);
        QCOMPARE(office.summary(), u"Aucune"_s);
        QTRY_VERIFY(office.delegate->isReading());
    }

    void whileAReadWaitsForTheBindNothingIsPrinted()
    {
        const Office office(silentRead.doing("init", "slow"));
        office.start();
        office.delegate->loadXMLFile(cardOf(u"Alix"_s));
        office.delegate->readVitale(nullptr);
        QVERIFY(!office.delegate->isReading());
        office.delegate->printAttestation();
        QCOMPARE(office.notice(), refusedWhileReading);
        QCOMPARE(office.window->findChildren<PrintOperation*>().size(), 0);
        QTRY_VERIFY(office.delegate->isReading());
    }

    void aFilePanelOpenedBeforeTheReadOpensNoFile()
    {
        const auto office = Office::bound(silentRead);
        QVERIFY(office);
        office->delegate->loadXMLFile();
        auto* panel = office->window->findChild<QFileDialog*>();
        QVERIFY(panel != nullptr);
        panel->selectFile(cardOf(u"Zoé"_s));
        office->chooseFromStatusMenu(StatusMenu::ReadTag);
        QVERIFY(office->delegate->isReading());
        QMetaObject::invokeMethod(panel, "accept");
        QCOMPARE(office->notice(), refusedWhileReading);
        QCOMPARE(office->summary(), u"Aucune"_s);
    }

    void aFileCanBeOpenedDuringABind()
    {
        const Office office(slowBind);
        office.start();
        QVERIFY(!office.delegate->isEnabled());
        office.delegate->loadXMLFile(cardOf(u"Zoé"_s));
        QVERIFY(office.summary().startsWith(u"SPECIMEN Zoé"_s));
    }

    void whileACardIsReadTheViewerPrintsNothing()
    {
        const auto office = officeOfAlix(silentRead);
        QVERIFY(office);
        office->delegate->viewAttestation();
        office->delegate->readVitale(nullptr);
        printFromViewer(*office);
        QCOMPARE(office->viewer()->findChildren<PrintOperation*>().size(), 0);
        QCOMPARE(office->notice(), refusedWhileReading);
    }
};

template class RunnableTests<tst_AppDelegateCards, QApplication>;
#include "tst_appdelegatecards.moc"
