#include "app/models/RecentAttestations.h"
#include "app/models/StatusMenu.h"
#include "support/views/MXButton.h"
#include "tests/app/Office.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"
#include "tests/platform/gui/Desktop.h"

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QMenu>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// All menus of status items.
QList<const QWidget*> statusMenus()
{
    QList<const QWidget*> menus;
    for (const QWidget* widget : QApplication::topLevelWidgets()) {
        const auto* const menu = qobject_cast<const QMenu*>(widget);
        if (menu != nullptr && menu->title() == StatusMenu::title)
            menus.append(menu);
    }
    return menus;
}

} // namespace

class tst_AppDelegateMenus : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        // The next event reports that no keys are held down.
        QWidget window;
        window.show();
        QTest::mouseClick(&window, Qt::LeftButton);
    }

    void readWithTwoModifiersOpensAFileAndWithOneReadsTheCard_data()
    {
        QTest::addColumn<Qt::KeyboardModifiers>("keys");
        QTest::addColumn<bool>("fromFile");
        QTest::newRow("none") << Qt::KeyboardModifiers() << false;
        QTest::newRow("control") << Qt::KeyboardModifiers(Qt::ControlModifier) << false;
        QTest::newRow("option") << Qt::KeyboardModifiers(Qt::AltModifier) << false;
        QTest::newRow("control and shift") << (Qt::ControlModifier | Qt::ShiftModifier) << false;
        QTest::newRow("both") << (Qt::ControlModifier | Qt::AltModifier) << true;
        QTest::newRow("both and shift") << (Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier) << true;
    }

    void readWithTwoModifiersOpensAFileAndWithOneReadsTheCard()
    {
        QFETCH(const Qt::KeyboardModifiers, keys);
        QFETCH(const bool, fromFile);
        const auto office = Office::bound(silentRead);
        QVERIFY(office);
        QTest::mouseClick(office->window->readButton(), Qt::LeftButton, keys);
        QCOMPARE(office->delegate->isReading(), !fromFile);
        const auto* panel = office->window->findChild<QFileDialog*>();
        QCOMPARE(panel != nullptr, fromFile);
        QVERIFY(!panel || (panel->isVisible() && panel->windowTitle() == u"Sélectionnez un fichier XML"_s &&
                           panel->fileMode() == QFileDialog::ExistingFile));
    }

    void theFilePanelFitsTheScreenAndOpensOnce()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        office->delegate->loadXMLFile();
        office->delegate->loadXMLFile();
        QCOMPARE(office->window->findChildren<QFileDialog*>().size(), 1);
        const auto* panel = office->window->findChild<QFileDialog*>();
        QCOMPARE(panel->nameFilters(), (QStringList{u"Fichiers de carte (*.xml)"_s, u"Tous les fichiers (*)"_s}));
        const QSize room = panel->screen()->availableSize();
        QCOMPARE(panel->size().boundedTo(room), panel->size());
    }

    void entriesOfTheMenuBarAreValidatedByTheirAction()
    {
        const QStringList cardActions{u"readAction"_s, u"viewAction"_s, u"printAction"_s, u"saveAction"_s};
        const Office office;
        office.start();
        for (const bool isBound : {false, true}) {
            QTRY_COMPARE(office.delegate->isEnabled(), isBound);
            for (const QAction* action : office.window->findChildren<QAction*>()) {
                const bool isCardAction = cardActions.contains(action->objectName());
                // No address of an update feed is configured.
                const bool isUpdate = action == office.window->updateMenuItem();
                QCOMPARE(office.delegate->validateMenuItem(*action), !isUpdate && (isBound || !isCardAction));
                if (isCardAction)
                    QCOMPARE(action->isEnabled(), isBound);
            }
        }
    }

    void showingTheStatusItemTwiceMakesOneItem()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        const QList<const QWidget*> first = statusMenus();
        QCOMPARE(first.size(), 1);
        office->delegate->showStatusItem();
        QCOMPARE(statusMenus(), first);
        office->delegate->hideStatusItem();
        QCOMPARE(statusMenus().size(), 0);
        office->delegate->hideStatusItem();
        office->delegate->showStatusItem();
        QCOMPARE(statusMenus().size(), 1);
    }

    void withoutTheSettingThereIsNoStatusItem()
    {
        const Office office(silent);
        MVSettings::setPreferencesWithBooleanValue(office.settings, Settings::statusItemMenu, false);
        office.start();
        QCOMPARE(statusMenus().size(), 0);
        MVSettings::setPreferencesWithBooleanValue(office.settings, Settings::statusItemMenu, true);
        office.delegate->showStatusItem();
        QCOMPARE(statusMenus().size(), 1);
    }

    void aHiddenWindowIsShownWhenTheStatusItemIsRemoved()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        office->window->hide();
        office->delegate->hideStatusItem();
        QVERIFY(office->window->isVisible());
    }

    void tagsOutsideTheStatusMenuAreIgnored_data()
    {
        QTest::addColumn<int>("tag");
        QTest::addColumn<bool>("reads");
        QTest::newRow("before the first") << 9 << false;
        QTest::newRow("read") << 10 << true;
        QTest::newRow("view") << 11 << true;
        QTest::newRow("print") << 12 << true;
        QTest::newRow("save") << 13 << true;
        QTest::newRow("after the last") << 16 << false;
    }

    void tagsOutsideTheStatusMenuAreIgnored()
    {
        QFETCH(const int, tag);
        QFETCH(const bool, reads);
        const auto office = Office::bound(silentRead);
        QVERIFY(office);
        office->chooseFromStatusMenu(tag);
        QCOMPARE(office->delegate->isReading(), reads);
    }

    void aSenderThatIsNotAMenuEntryIsIgnored()
    {
        const auto office = Office::bound(silentRead);
        QVERIFY(office);
        const QString recent = office->path(u"a.pdf"_s);
        QVERIFY(writeFile(recent, {}));
        QVERIFY(RecentAttestations(office->settings).add(recent));
        const Desktop desktop;
        QAction entry;
        entry.setData(0);
        for (const QObject* sender :
             std::initializer_list<const QObject*>{nullptr, office->window->readButton(), &entry}) {
            QCOMPARE(desktop.opened(), QList<QUrl>());
            office->delegate->executeAction(sender);
            office->delegate->openRecentAttestation(sender);
        }
        QVERIFY(!office->delegate->isReading());
        QCOMPARE(desktop.opened(), QList<QUrl>{QUrl::fromLocalFile(recent)});
    }

    void beforeTheBindTheStatusMenuCanOnlyOpenTheFolder()
    {
        const Office office(silent);
        office.start();
        for (int tag = StatusMenu::ReadTag; tag <= StatusMenu::SaveTag; ++tag) {
            office.chooseFromStatusMenu(tag);
            QVERIFY(!office.delegate->isReading());
        }
        QVERIFY(!QFileInfo::exists(office.attestations()));
        office.chooseFromStatusMenu(14);
        QVERIFY(QFileInfo(office.attestations()).isDir());
    }

    void aReadFromTheStatusMenuBeforeTheBindIsDropped()
    {
        const Office office(silentRead.doing("init", "slow"));
        office.start();
        office.chooseFromStatusMenu(10);
        QTRY_VERIFY(office.delegate->isEnabled());
        QVERIFY(!office.delegate->isReading());
    }

    void anEleventhFileIsWrittenButNotAddedToTheMenu()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        RecentAttestations recents(office->settings);
        for (int number = 1; number <= RecentAttestations::maximumCount; ++number)
            QVERIFY(recents.add(u"/folder/%1.pdf"_s.arg(number)));
        const std::vector<MenuEntry> before = recents.menu();
        office->delegate->loadXMLFile(Office::specimen());
        office->delegate->saveAttestation();
        QTRY_COMPARE(Office::alertText(), std::optional(u"L'attestation a bien été enregistrée."_s));
        QVERIFY(QFileInfo(office->attestations() + u"/SPECIMEN Hélène.pdf"_s).isFile());
        QCOMPARE(recents.menu(), before);
    }

    void theMenuOfAnEmptyListOfRecentFilesHasNoSeparator()
    {
        const auto office = Office::bound();
        QVERIFY(office);
        const QList<QAction*> entries = office->window->recentsMenuItem()->menu()->actions();
        QCOMPARE(entries.size(), 1);
        QCOMPARE(entries.first()->text(), u"Effacer le menu"_s);
        QCOMPARE(entries.first()->data().toInt(), 1000);
        QVERIFY(!entries.first()->isEnabled());
        QCOMPARE(office->window->recentsMenuItem()->menu()->title(), u"Recents"_s);
    }
};

template class RunnableTests<tst_AppDelegateMenus, QApplication>;
#include "tst_appdelegatemenus.moc"
