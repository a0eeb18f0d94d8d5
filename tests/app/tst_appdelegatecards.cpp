#include "app/models/StatusMenu.h"
#include "attestation/print/PrintDialog.h"
#include "attestation/print/PrintOperation.h"
#include "tests/app/Office.h"
#include "tests/common/TestCase.h"
#include "tests/fakes/FakeService.h"

#include <QAction>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QHash>
#include <QLabel>
#include <QMainWindow>
#include <QMimeData>
#include <QTest>
#include <QUrl>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

const FakeScript silentRead = FakeScript().doing("vitale_read", "silent");
const FakeScript slowBind = FakeScript().doing("init", "slow");

const QString refusedWhileReading = u"Demande refusée pendant la lecture d’une carte."_s;
const QString refusedWhilePrinting =
    u"Demande refusée pendant l’impression\u00A0: confirmez ou annulez d’abord celle-ci."_s;

// A way for a card, or a page of one, to be asked for.
using Way = std::function<void(const Office&, const QString&)>;

// A file that is dragged over the main window, and dropped there later.
class Drag
{
public:
    Drag(const Office& office, const QString& path)
        : m_office(office)
    {
        m_data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent event(place.toPoint(), Qt::CopyAction, &m_data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_office.window.get(), &event);
    }

    void drop() const
    {
        QDropEvent event(place, Qt::CopyAction, &m_data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_office.window.get(), &event);
    }

private:
    static constexpr QPointF place{50, 50};

    const Office& m_office;
    QMimeData m_data;
};

// What happens to some objects, of each the events of one kind.
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

void chooseFromStatusMenu(const Office& office, int tag)
{
    QAction entry;
    entry.setData(tag);
    office.delegate->executeAction(&entry);
}

QString summary(const Office& office)
{
    return office.window->vitaleInfoTextField()->text();
}

// What the panel says last.
QString notice(const Office& office)
{
    const QStringList lines = office.window->findChild<QLabel*>(u"panelLineField"_s)->text().split(u'\n');
    return lines.size() > 1 ? lines.last() : QString();
}

// The attestation's window: the one beside the main window that has a page.
QMainWindow* viewer(const Office& office)
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* window = qobject_cast<QMainWindow*>(widget);
        if (window != nullptr && window != office.window.get() && window->findChild<QAction*>(u"printAction"_s))
            return window;
    }
    return nullptr;
}

void printFromViewer(const Office& office)
{
    viewer(office)->findChild<QAction*>(u"printAction"_s)->trigger();
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

// Whose card it is: what is printed is what the windows show, and a card that is read, opened or printed stays.
class tst_AppDelegateCards : public TestCase
{
    Q_OBJECT

private:
    // An office whose card service has that behaviour, once it is bound.
    [[nodiscard]] std::unique_ptr<Office> boundOffice(const FakeScript& behaviour = {}) const
    {
        auto office = std::make_unique<Office>(m_fake->command(behaviour));
        office->start();
        const bool isBound = QTest::qWaitFor([&office] { return office->delegate->isEnabled(); });
        return isBound ? std::move(office) : nullptr;
    }

    // The specimen card's file with another first name.
    [[nodiscard]] QString cardOf(const QString& firstName) const
    {
        QFile specimen(QStringLiteral(PELMORA_STAGE_SHARE "/specimen.xml"));
        QFile card(m_folder.filePath(firstName + u".xml"_s));
        if (!specimen.open(QIODevice::ReadOnly) || !card.open(QIODevice::WriteOnly))
            return {};
        card.write(specimen.readAll().replace("Hélène", firstName.toUtf8()));
        return card.fileName();
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
    std::unique_ptr<FakeService> m_fake;

private Q_SLOTS:
    // No print server is asked.
    void initTestCase() { qputenv("CUPS_SERVER", QFile::encodeName(m_folder.filePath(u"cups.sock"_s))); }

    void init() { m_fake = std::make_unique<FakeService>(); }

    void whileAPrintAsksNoCardTakesItsPlace_data()
    {
        addWays();
        QTest::newRow("read") << Way(
            [](const Office& office, const QString&) { office.delegate->readVitale(office.window.get()); });
        for (int tag = StatusMenu::ReadTag; tag <= StatusMenu::SaveTag; ++tag)
            QTest::addRow("status menu %d", tag)
                << Way([tag](const Office& office, const QString&) { chooseFromStatusMenu(office, tag); });
    }

    void whileAPrintAsksNoCardTakesItsPlace()
    {
        QFETCH(const Way, way);
        const auto office = boundOffice();
        QVERIFY(office);
        office->delegate->loadXMLFile(cardOf(u"Alix"_s));
        office->delegate->viewAttestation();
        printFromViewer(*office);
        QTRY_VERIFY(dialog());
        const QString before = summary(*office);

        way(*office, cardOf(u"Zoé"_s));
        QCOMPARE(notice(*office), refusedWhilePrinting);
        QCOMPARE(summary(*office), before);
        QCOMPARE(viewer(*office)->windowTitle(), u"Alix SPECIMEN"_s);
        QVERIFY(!office->delegate->isReading());
        QVERIFY(office->window->findChild<QFileDialog*>() == nullptr);
        QVERIFY(!QFileInfo::exists(office->attestations()));
        QCOMPARE(dialog()->windowTitle(), u"Imprimer l’attestation – SPECIMEN Alix"_s);
        QTRY_COMPARE(QApplication::activeWindow(), dialog());

        dialog()->reject();
        office->delegate->loadXMLFile(cardOf(u"Zoé"_s));
        QVERIFY(summary(*office).startsWith(u"SPECIMEN Zoé"_s));
        QCOMPARE(notice(*office), QString());
    }

    void aFileThatIsDroppedMeanwhileIsRefused_data()
    {
        QTest::addColumn<std::function<void(const Office&)>>("meanwhile");
        QTest::addColumn<QString>("reason");
        const auto addRow = [](const char* name, std::function<void(const Office&)> meanwhile, const QString& reason) {
            QTest::newRow(name) << std::move(meanwhile) << reason;
        };
        const auto print = [](const Office& office) { printFromViewer(office); };
        addRow("request to print", print, refusedWhilePrinting);
        addRow(
            "print dialog",
            [print](const Office& office) {
                print(office);
                QVERIFY(QTest::qWaitFor([] { return dialog() != nullptr; }));
            },
            refusedWhilePrinting);
        addRow("read", [](const Office& office) { office.delegate->readVitale(nullptr); }, refusedWhileReading);
        addRow(
            "alert",
            [](const Office& office) {
                office.delegate->loadXMLFile(u"/absent.xml"_s);
                QVERIFY(QTest::qWaitFor([] { return Office::alert() != nullptr; }));
            },
            u"Fichier refusé\u00A0: fermez d’abord la fenêtre ouverte devant celle-ci."_s);
    }

    void aFileThatIsDroppedMeanwhileIsRefused()
    {
        QFETCH(const std::function<void(const Office&)>, meanwhile);
        QFETCH(const QString, reason);
        const auto office = boundOffice(silentRead);
        QVERIFY(office);
        office->delegate->loadXMLFile(cardOf(u"Alix"_s));
        QTRY_COMPARE(viewer(*office)->windowTitle(), u"Alix SPECIMEN"_s);
        const Drag drag(*office, cardOf(u"Zoé"_s));
        meanwhile(*office);
        drag.drop();
        QCOMPARE(notice(*office), reason);
        QVERIFY(summary(*office).startsWith(u"SPECIMEN Alix"_s));
    }

    void fromThePrintsRequestOnNoCardTakesItsPlace_data() { addWays(); }

    void fromThePrintsRequestOnNoCardTakesItsPlace()
    {
        QFETCH(const Way, way);
        const auto office = boundOffice();
        QVERIFY(office);
        office->delegate->loadXMLFile(cardOf(u"Alix"_s));
        office->delegate->printAttestation();
        QVERIFY(!dialog());
        way(*office, cardOf(u"Zoé"_s));
        QCOMPARE(notice(*office), refusedWhilePrinting);
        QVERIFY(summary(*office).startsWith(u"SPECIMEN Alix"_s));
        QVERIFY(office->window->findChild<QFileDialog*>() == nullptr);
    }

    void aWindowThatIsAskedForComesBehindThePrintThatAsks()
    {
        const auto office = boundOffice();
        QVERIFY(office);
        office->delegate->loadXMLFile(cardOf(u"Alix"_s));
        office->delegate->printAttestation();
        QTRY_VERIFY(dialog());
        office->delegate->showMainWindow();
        QTRY_COMPARE(QApplication::activeWindow(), dialog());
    }

    void ofTwoWindowsOnePrints()
    {
        const auto office = boundOffice();
        QVERIFY(office);
        office->delegate->loadXMLFile(cardOf(u"Alix"_s));
        office->delegate->viewAttestation();
        printFromViewer(*office);
        office->delegate->printAttestation();
        QCOMPARE(office->window->findChildren<PrintOperation*>().size(), 0);
        QCOMPARE(viewer(*office)->findChildren<PrintOperation*>().size(), 1);
        QCOMPARE(notice(*office), refusedWhilePrinting);
    }

    void aVisibleViewerFollowsAtOnce()
    {
        const auto office = boundOffice();
        QVERIFY(office);
        office->delegate->loadXMLFile(cardOf(u"Alix"_s));
        office->delegate->viewAttestation();
        office->delegate->loadXMLFile(cardOf(u"Zoé"_s));
        QCOMPARE(viewer(*office)->windowTitle(), u"Zoé SPECIMEN"_s);
    }

    void aHiddenViewerFollowsSoonAfter()
    {
        const auto office = boundOffice();
        QVERIFY(office);
        office->delegate->loadXMLFile(cardOf(u"Alix"_s));
        QTRY_COMPARE(viewer(*office)->windowTitle(), u"Alix SPECIMEN"_s);
        QVERIFY(!viewer(*office)->isVisible());
    }

    void aHiddenViewerWaitsUntilTheSummaryIsPainted()
    {
        const auto office = boundOffice();
        QVERIFY(office);
        QVERIFY(QTest::qWaitForWindowExposed(office->window.get()));
        QCoreApplication::processEvents();
        EventOrder order;
        order.watch(*office->window->vitaleInfoTextField(), QEvent::Paint);
        order.watch(*viewer(*office), QEvent::WindowTitleChange);
        office->delegate->loadXMLFile(cardOf(u"Alix"_s));
        QTRY_COMPARE(viewer(*office)->windowTitle(), u"Alix SPECIMEN"_s);
        QCOMPARE(order.types(), (QList{QEvent::Paint, QEvent::WindowTitleChange}));
    }

    void aHiddenViewerPrintsTheNewCardAtOnce()
    {
        const auto office = boundOffice();
        QVERIFY(office);
        office->delegate->loadXMLFile(cardOf(u"Alix"_s));
        QTRY_COMPARE(viewer(*office)->windowTitle(), u"Alix SPECIMEN"_s);
        office->delegate->loadXMLFile(cardOf(u"Zoé"_s));
        printFromViewer(*office);
        QTRY_VERIFY(dialog());
        QCOMPARE(dialog()->windowTitle(), u"Imprimer l’attestation – SPECIMEN Zoé"_s);
    }

    void theViewerFollowsAReadAndAFailedReadLeavesIt()
    {
        const QString card = cardOf(u"Alix"_s);
        auto office = std::make_unique<Office>(
            ServiceCommand{QStringLiteral(PELMORA_STAGE "/libexec/pelmora/com.morvel.lvit"), {u"--simulate"_s, card}});
        office->start();
        QTRY_VERIFY(office->delegate->isEnabled());
        office->delegate->viewAttestation();
        QTRY_VERIFY(viewer(*office)->isVisible());
        QCOMPARE(viewer(*office)->windowTitle(), u"Alix SPECIMEN"_s);

        QVERIFY(QFile::remove(card));
        QVERIFY(QFile::rename(cardOf(u"Zoé"_s), card));
        office->delegate->readVitale(nullptr);
        QTRY_VERIFY(summary(*office).startsWith(u"SPECIMEN Zoé"_s));
        QCOMPARE(viewer(*office)->windowTitle(), u"Zoé SPECIMEN"_s);

        QVERIFY(QFile::remove(card));
        office->delegate->readVitale(nullptr);
        QTRY_VERIFY(Office::alert());
        QCOMPARE(viewer(*office)->windowTitle(), u"Zoé SPECIMEN"_s);
    }

    void whileACardIsReadNoFileTakesItsPlace_data() { addWays(); }

    void whileACardIsReadNoFileTakesItsPlace()
    {
        QFETCH(const Way, way);
        const auto office = boundOffice(silentRead);
        QVERIFY(office);
        office->delegate->readVitale(nullptr);
        QVERIFY(office->delegate->isReading());
        way(*office, cardOf(u"Zoé"_s));
        QCOMPARE(notice(*office), refusedWhileReading);
        QCOMPARE(summary(*office), u"Aucune"_s);
        QVERIFY(office->window->findChild<QFileDialog*>() == nullptr);
    }

    void whileAReadWaitsForTheBindNoFileTakesItsPlace()
    {
        const Office office(m_fake->command(silentRead.doing("init", "slow")));
        office.start();
        office.delegate->readVitale(nullptr);
        QVERIFY(!office.delegate->isReading());
        office.delegate->loadXMLFile(cardOf(u"Zoé"_s));
        QCOMPARE(notice(office), refusedWhileReading);
        QCOMPARE(summary(office), u"Aucune"_s);
        QTRY_VERIFY(office.delegate->isReading());
    }

    void whileAReadWaitsForTheBindNothingIsPrinted()
    {
        const Office office(m_fake->command(silentRead.doing("init", "slow")));
        office.start();
        office.delegate->loadXMLFile(cardOf(u"Alix"_s));
        office.delegate->readVitale(nullptr);
        QVERIFY(!office.delegate->isReading());
        office.delegate->printAttestation();
        QCOMPARE(notice(office), refusedWhileReading);
        QCOMPARE(office.window->findChildren<PrintOperation*>().size(), 0);
        QTRY_VERIFY(office.delegate->isReading());
    }

    void aPanelThatWasOpenBeforeTheReadOpensNothing()
    {
        const auto office = boundOffice(silentRead);
        QVERIFY(office);
        office->delegate->loadXMLFile();
        auto* panel = office->window->findChild<QFileDialog*>();
        QVERIFY(panel != nullptr);
        panel->selectFile(cardOf(u"Zoé"_s));
        chooseFromStatusMenu(*office, StatusMenu::ReadTag);
        QVERIFY(office->delegate->isReading());
        QMetaObject::invokeMethod(panel, "accept");
        QCOMPARE(notice(*office), refusedWhileReading);
        QCOMPARE(summary(*office), u"Aucune"_s);
    }

    void aBindAloneHoldsUpNoFile()
    {
        const Office office(m_fake->command(slowBind));
        office.start();
        QVERIFY(!office.delegate->isEnabled());
        office.delegate->loadXMLFile(cardOf(u"Zoé"_s));
        QVERIFY(summary(office).startsWith(u"SPECIMEN Zoé"_s));
    }

    void whileACardIsReadTheViewerPrintsNothing()
    {
        const auto office = boundOffice(silentRead);
        QVERIFY(office);
        office->delegate->loadXMLFile(cardOf(u"Alix"_s));
        office->delegate->viewAttestation();
        office->delegate->readVitale(nullptr);
        printFromViewer(*office);
        QCOMPARE(viewer(*office)->findChildren<PrintOperation*>().size(), 0);
        QCOMPARE(notice(*office), refusedWhileReading);
    }
};

QTEST_MAIN(tst_AppDelegateCards)
#include "tst_appdelegatecards.moc"
