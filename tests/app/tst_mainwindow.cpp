#include "app/MainWindow.h"
#include "app/ProgressSheet.h"
#include "platform/Bundle.h"
#include "support/MVSimpleOpaqueView.h"
#include "support/MXButton.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QDateTime>
#include <QDragEnterEvent>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize smallScreen(1366, 768);
constexpr QSize windowFrame(16, 48);

using Signal = void (MainWindow::*)();

struct ExpectedTile
{
    const char* name;
    MXButton* (MainWindow::*outlet)() const;
    QStringView title;
    std::optional<std::array<int, 3>> colour;
    Signal signal;
};

const std::array expectedTiles{
    ExpectedTile{"readButton", &MainWindow::readButton, u"Lire", {{0, 162, 1}}, &MainWindow::readRequested},
    ExpectedTile{"viewButton", &MainWindow::viewButton, u"Voir", {{146, 39, 221}}, &MainWindow::viewRequested},
    ExpectedTile{"printButton", &MainWindow::printButton, u"Imprimer", {{223, 0, 19}}, &MainWindow::printRequested},
    ExpectedTile{"saveButton", &MainWindow::saveButton, u"Enregistrer", {{0, 160, 211}}, &MainWindow::saveRequested},
    ExpectedTile{"mailButton", &MainWindow::mailButton, u"Suggestion", {{250, 104, 12}}, &MainWindow::mailRequested},
    ExpectedTile{
        "settingsButton", &MainWindow::settingsButton, u"Préférences", {{88, 88, 88}}, &MainWindow::settingsRequested},
    ExpectedTile{"quitButton", &MainWindow::quitButton, u"Quitter", std::nullopt, &MainWindow::quitRequested},
};

struct ExpectedItem
{
    const char* menu;
    const char* name;
    QStringView title;
    QStringView shortcut;
    Signal signal; // null when the window sees to it itself, or an entry has a submenu
    bool cardAction;
};

const std::array expectedItems{
    ExpectedItem{"applicationMenu", "aboutAction", u"À propos de Pelmora", u"", nullptr, false},
    ExpectedItem{"applicationMenu", "settingsAction", u"Préférences…", u"Ctrl+,", &MainWindow::settingsRequested,
                 false},
    ExpectedItem{"applicationMenu", "recentsMenuItem", u"Recents", u"", nullptr, false},
    ExpectedItem{"applicationMenu", "updateMenuItem", u"Rechercher les mises à jour…", u"",
                 &MainWindow::updateRequested, false},
    ExpectedItem{"applicationMenu", "quitAction", u"Quitter Pelmora", u"Ctrl+Q", &MainWindow::quitRequested, false},
    ExpectedItem{"fileMenu", "readAction", u"Lire", u"Ctrl+L", &MainWindow::readRequested, true},
    ExpectedItem{"fileMenu", "viewAction", u"Voir", u"Ctrl+Shift+P", &MainWindow::viewRequested, true},
    ExpectedItem{"fileMenu", "printAction", u"Imprimer", u"Ctrl+P", &MainWindow::printRequested, true},
    ExpectedItem{"fileMenu", "saveAction", u"Enregistrer", u"Ctrl+S", &MainWindow::saveRequested, true},
    ExpectedItem{"fileMenu", "openCardAction", u"Ouvrir une carte XML…", u"Ctrl+O", &MainWindow::cardFileRequested,
                 false},
    ExpectedItem{"fileMenu", "folderAction", u"Ouvrir le dossier des attestations", u"Ctrl+Shift+O",
                 &MainWindow::folderRequested, false},
    ExpectedItem{"fileMenu", "closeAction", u"Fermer la fenêtre", u"Ctrl+W", nullptr, false},
    ExpectedItem{"helpMenu", "helpAction", u"Aide de Pelmora", u"F1", &MainWindow::helpRequested, false},
    ExpectedItem{"helpMenu", "mailAction", u"Envoyer une suggestion", u"", &MainWindow::mailRequested, false},
};

// The web's accessibility guidelines, worked out here by themselves.
double luminance(QRgb colour)
{
    const auto linear = [](int channel) {
        const double part = channel / 255.0;
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

double contrast(QRgb one, QRgb other)
{
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

// How well what is drawn stands out from the colour in the picture's corner.
double drawnContrast(const QImage& picture)
{
    double best = 1;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            best = std::max(best, contrast(picture.pixel(0, 0), picture.pixel(x, y)));
    }
    return best;
}

// A part of the window as it is on the screen.
QImage shot(MainWindow& window, const QWidget* part)
{
    return window.grab(QRect(part->mapTo(&window, QPoint()), part->size())).toImage();
}

// Where there are other pixels than the background's, in the given part of a picture.
bool hasInk(const QImage& picture, const QRect& part)
{
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            if (picture.pixel(x, y) != picture.pixel(0, 0))
                return true;
        }
    }
    return false;
}

QString withoutMnemonic(const QString& text)
{
    return QString(text).remove(u'&');
}

// The letters behind "&" in texts, in upper case.
QStringList mnemonics(const QStringList& texts)
{
    QStringList letters;
    for (const QString& text : texts) {
        if (const qsizetype mark = text.indexOf(u'&'); mark >= 0)
            letters.append(text.sliced(mark + 1, 1).toUpper());
    }
    return letters;
}

bool hasDoubles(QStringList letters)
{
    const qsizetype count = letters.size();
    return letters.removeDuplicates() != 0 || letters.size() != count;
}

QStringList textsOf(const QList<QAction*>& actions)
{
    QStringList texts;
    for (const QAction* action : actions)
        texts.append(action->text());
    return texts;
}

// The labels, tiles and menu titles that have less room than they need.
QStringList cutTexts(const QWidget& window)
{
    QStringList cut;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        const bool shows = qobject_cast<const QLabel*>(widget) || qobject_cast<const QPushButton*>(widget);
        const QSize needed = widget->sizeHint();
        if (shows && widget->isVisible() && (widget->width() < needed.width() || widget->height() < needed.height()))
            cut.append(widget->objectName());
    }
    return cut;
}

bool acceptsDrag(MainWindow& window, const QMimeData& data)
{
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QCoreApplication::sendEvent(&window, &enter);
    return enter.isAccepted();
}

void drop(MainWindow& window, const QMimeData& data)
{
    QDropEvent event(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window, &event);
}

} // namespace

class tst_MainWindow : public QObject
{
    Q_OBJECT

private:
    const Bundle m_bundle{QStringLiteral(PELMORA_STAGE_SHARE)};
    QFont m_font;
    QPalette m_palette;
    std::unique_ptr<MainWindow> m_window;

    MainWindow& shown()
    {
        m_window = std::make_unique<MainWindow>(m_bundle);
        m_window->show();
        return *m_window;
    }

    QAction* action(const char* name) const { return m_window->findChild<QAction*>(QLatin1String(name)); }

private Q_SLOTS:
    void initTestCase()
    {
        QTest::failOnWarning(QRegularExpression(u"^(?!.*(propagateSizeHints|does not support))"_s));
        m_font = QApplication::font();
        m_palette = QApplication::palette();
    }

    void init() { QVERIFY(QTest::qWaitForWindowActive(&shown())); }

    void cleanup()
    {
        m_window.reset();
        QApplication::setFont(m_font);
        QApplication::setPalette(m_palette);
    }

    void tilesHaveTheirColoursTitlesAndNames()
    {
        for (const ExpectedTile& expected : expectedTiles) {
            const MXButton* button = (*m_window.*expected.outlet)();
            QCOMPARE(button->objectName(), QLatin1String(expected.name));
            QCOMPARE(button->text(), expected.title.toString());
            QCOMPARE(QAccessible::queryAccessibleInterface(const_cast<MXButton*>(button))->text(QAccessible::Name),
                     expected.title.toString());
            const QImage picture = shot(*m_window, button);
            const QColor colour = expected.colour
                                      ? QColor((*expected.colour)[0], (*expected.colour)[1], (*expected.colour)[2])
                                      : m_window->palette().color(QPalette::Window);
            QCOMPARE(picture.pixelColor(0, 0), colour);
            QCOMPARE(picture.pixelColor(picture.width() - 1, picture.height() - 1), colour);
        }
    }

    void tilesShowTheirImageAboveTheirTitle()
    {
        for (const ExpectedTile& expected : expectedTiles) {
            const MXButton* button = (*m_window.*expected.outlet)();
            const QRect image = button->cell().imageRectForBounds(button->rect(), *button);
            const QRect title = button->cell().titleRectForBounds(button->rect(), *button);
            const QImage picture = shot(*m_window, button);
            QVERIFY2(hasInk(picture, image), expected.name);
            QVERIFY2(hasInk(picture, title), expected.name);
            QVERIFY(image.bottom() < title.top());
        }
    }

    void tilesAndTheirMenuEntriesAskForTheSame()
    {
        for (const ExpectedTile& expected : expectedTiles) {
            const QSignalSpy asked(m_window.get(), expected.signal);
            QTest::mouseClick((*m_window.*expected.outlet)(), Qt::LeftButton);
            QCOMPARE(asked.count(), 1);
        }
        for (const ExpectedItem& expected : expectedItems) {
            if (!expected.signal)
                continue;
            const QSignalSpy asked(m_window.get(), expected.signal);
            action(expected.name)->trigger();
            QCOMPARE(asked.count(), 1);
        }
    }

    void everyTextStandsOut_data()
    {
        QTest::addColumn<QPalette>("desktop");
        QTest::newRow("light") << QPalette(QColor(239, 239, 239));
        QTest::newRow("dark") << QPalette(QColor(45, 45, 48));
        QTest::newRow("black") << QPalette(QColor(0, 0, 0));
    }

    void everyTextStandsOut()
    {
        QFETCH(const QPalette, desktop);
        QApplication::setPalette(desktop);
        QVERIFY(QTest::qWaitForWindowExposed(&shown()));
        for (const ExpectedTile& expected : expectedTiles)
            QVERIFY2(drawnContrast(shot(*m_window, (*m_window.*expected.outlet)())) >= 4.5, expected.name);
        for (const QLabel* label : m_window->vitaleInfoView()->findChildren<QLabel*>())
            QVERIFY2(drawnContrast(shot(*m_window, label)) >= 4.5, qPrintable(label->objectName()));
    }

    void thePanelIsGreenAndSaysThatThereIsNoCard()
    {
        QCOMPARE(m_window->vitaleInfoTextField()->text(), u"Aucune"_s);
        QCOMPARE(m_window->vitaleInfoTextField()->objectName(), u"vitaleInfoTextField"_s);
        QCOMPARE(m_window->vitaleInfoView()->backgroundColor(), QColor(0, 162, 1));
        const QImage panel = shot(*m_window, m_window->vitaleInfoView());
        QCOMPARE(panel.pixelColor(0, 0), QColor(0, 162, 1));
        QCOMPARE(panel.pixelColor(panel.width() - 1, panel.height() - 1), QColor(0, 162, 1));
    }

    void theTimeOfReadingIsBesideTheSummary()
    {
        const auto* label = m_window->findChild<QLabel*>(u"cardTimeLabel"_s);
        const QDateTime time(QDate(2026, 11, 21), QTime(14, 2));
        m_window->setCardTime(MainWindow::CardOrigin::Reader, time);
        QCOMPARE(label->text(), u"Lue le 21/11/2026 à 14:02"_s);
        m_window->setCardTime(MainWindow::CardOrigin::File, time);
        QCOMPARE(label->text(), u"Fichier ouvert le 21/11/2026 à 14:02"_s);
        QCOMPARE(m_window->vitaleInfoTextField()->text(), u"Aucune"_s);
    }

    void noNameMakesTheWindowGrow_data()
    {
        QTest::addColumn<QString>("summary");
        QTest::newRow("long") << QString(300, u'W') + u" CAMILLE\n1 85 05 78 006 084 36\n2 bénéficiaires"_s;
        QTest::newRow("endless") << QString(2'000'000, u'W') + u"\n\n"_s;
        QTest::newRow("many lines") << QString(5000, u'\n');
        QTest::newRow("none") << QString();
    }

    void noNameMakesTheWindowGrow()
    {
        QFETCH(const QString, summary);
        const QSize size = m_window->size();
        const QSize smallest = m_window->minimumSizeHint();
        m_window->vitaleInfoTextField()->setText(summary);
        QVERIFY(!m_window->grab().isNull());
        QCOMPARE(m_window->size(), size);
        QCOMPARE(m_window->minimumSizeHint(), smallest);
        QCOMPARE(m_window->vitaleInfoTextField()->text(), summary);
    }

    void noTextIsTakenForRichText()
    {
        m_window->beginSheet(u"<b>Lecture</b>"_s);
        for (const QLabel* label : m_window->findChildren<QLabel*>())
            QVERIFY2(label->textFormat() == Qt::PlainText, qPrintable(label->objectName()));
        m_window->vitaleInfoTextField()->setText(u"<h1>SPECIMEN</h1>"_s);
        const QImage marked = shot(*m_window, m_window->vitaleInfoTextField());
        m_window->vitaleInfoTextField()->setText(u"SPECIMEN"_s);
        QVERIFY(shot(*m_window, m_window->vitaleInfoTextField()) != marked);
    }

    void menusHaveTheirEntriesInOrder()
    {
        for (const char* menu : {"applicationMenu", "fileMenu", "helpMenu"}) {
            QStringList expected;
            for (const ExpectedItem& item : expectedItems) {
                if (qstrcmp(item.menu, menu) == 0)
                    expected.append(item.title.toString());
            }
            QStringList titles;
            for (const QAction* entry : m_window->findChild<QMenu*>(QLatin1String(menu))->actions()) {
                if (!entry->isSeparator())
                    titles.append(withoutMnemonic(entry->text()));
            }
            QCOMPARE(titles, expected);
        }
        QStringList menus = textsOf(m_window->menuBar()->actions());
        QCOMPARE(withoutMnemonic(menus.join(u' ')), u"Pelmora Fichier Aide"_s);
    }

    void menuEntriesShowTheirShortcuts()
    {
        for (const ExpectedItem& expected : expectedItems) {
            const QAction* entry = action(expected.name);
            QCOMPARE(entry->shortcut(), QKeySequence(expected.shortcut.toString()));
            QVERIFY(entry->isShortcutVisibleInContextMenu() || entry->shortcut().isEmpty());
        }
    }

    void shortcutsReachTheWindow()
    {
        for (const ExpectedItem& expected : expectedItems) {
            if (expected.shortcut.isEmpty() || !expected.signal)
                continue;
            const QKeyCombination keys = QKeySequence(expected.shortcut.toString())[0];
            const QSignalSpy asked(m_window.get(), expected.signal);
            QTest::keyClick(m_window.get(), keys.key(), keys.keyboardModifiers());
            QVERIFY2(asked.count() == 1, expected.name);
        }
    }

    void noTwoMnemonicsOrShortcutsClash()
    {
        QVERIFY(!hasDoubles(mnemonics(textsOf(m_window->menuBar()->actions()))));
        QCOMPARE(mnemonics(textsOf(m_window->menuBar()->actions())).size(), 3);
        QStringList shortcuts;
        for (const QMenu* menu : m_window->menuBar()->findChildren<QMenu*>()) {
            QVERIFY(!hasDoubles(mnemonics(textsOf(menu->actions()))));
            for (const QAction* entry : menu->actions()) {
                if (!entry->shortcut().isEmpty())
                    shortcuts.append(entry->shortcut().toString());
            }
        }
        QVERIFY(!hasDoubles(shortcuts));
    }

    void onlyTheCardActionsEntriesAreSwitched()
    {
        for (const bool enabled : {false, true}) {
            m_window->setCardActionsEnabled(enabled);
            for (const ExpectedItem& expected : expectedItems)
                QVERIFY2(action(expected.name)->isEnabled() == (enabled || !expected.cardAction), expected.name);
            for (const ExpectedTile& expected : expectedTiles)
                QVERIFY2((*m_window.*expected.outlet)()->isEnabled(), expected.name);
        }
    }

    void aDisabledTileAsksForNothingAndTheMenuStillQuits()
    {
        const QSignalSpy quit(m_window.get(), &MainWindow::quitRequested);
        m_window->quitButton()->setEnabled(false);
        QTest::mouseClick(m_window->quitButton(), Qt::LeftButton);
        QCOMPARE(quit.count(), 0);
        QTest::keyClick(m_window.get(), Qt::Key_Q, Qt::ControlModifier);
        QCOMPARE(quit.count(), 1);
    }

    void recentsTakesASubmenu()
    {
        QMenu recents(u"Recents"_s);
        m_window->recentsMenuItem()->setMenu(&recents);
        QCOMPARE(m_window->recentsMenuItem()->text(), u"Recents"_s);
        QCOMPARE(m_window->recentsMenuItem()->menu(), &recents);
        QCOMPARE(m_window->updateMenuItem(), action("updateMenuItem"));
    }

    void tabGoesRoundTheTilesInReadingOrder()
    {
        QCOMPARE(QApplication::focusWidget(), m_window->readButton());
        for (std::size_t step = 1; step <= expectedTiles.size(); ++step) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            const ExpectedTile& expected = expectedTiles.at(step % expectedTiles.size());
            QCOMPARE(QApplication::focusWidget(), (*m_window.*expected.outlet)());
        }
    }

    void returnPressesTheFocusedTileAndEscapeNothing()
    {
        const QSignalSpy viewed(m_window.get(), &MainWindow::viewRequested);
        m_window->viewButton()->setFocus();
        QTest::keyClick(m_window->viewButton(), Qt::Key_Return);
        QCOMPARE(viewed.count(), 1);
        QTest::keyClick(m_window->viewButton(), Qt::Key_Escape);
        QVERIFY(m_window->isVisible());
        QCOMPARE(viewed.count(), 1);
    }

    void nothingIsCut_data()
    {
        QTest::addColumn<double>("textSize");
        QTest::newRow("plain") << 1.0;
        QTest::newRow("200 %") << 2.0;
    }

    void nothingIsCut()
    {
        QFETCH(const double, textSize);
        QFont font = m_font;
        font.setPointSizeF(font.pointSizeF() * textSize);
        QApplication::setFont(font);
        QVERIFY(QTest::qWaitForWindowExposed(&shown()));
        m_window->resize(m_window->minimumSizeHint());
        QCOMPARE(cutTexts(*m_window).join(u' '), QString());
        const QSize room = smallScreen - windowFrame;
        QVERIFY(m_window->minimumSizeHint().boundedTo(room) == m_window->minimumSizeHint());
    }

    void theWindowFitsASmallScreenAtTwiceTheScale()
    {
        const QSize room = smallScreen / 2 - windowFrame / 2;
        QCOMPARE(m_window->minimumSizeHint().boundedTo(room), m_window->minimumSizeHint());
    }

    void theWindowStartsWithinItsScreen()
    {
        QVERIFY(m_window->width() <= m_window->screen()->availableSize().width());
        QVERIFY(m_window->height() <= m_window->screen()->availableSize().height());
    }

    void columnsAreAsWideAsEachOther()
    {
        QVERIFY(std::abs(m_window->viewButton()->width() - m_window->printButton()->width()) <= 1);
        QVERIFY(std::abs(m_window->saveButton()->width() - m_window->printButton()->width()) <= 1);
    }

    void oneLocalXmlFileMayBeDropped()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(u"SPECIMEN é.XML"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        const QSignalSpy dropped(m_window.get(), &MainWindow::cardFileDropped);
        QVERIFY(acceptsDrag(*m_window, data));
        drop(*m_window, data);
        QCOMPARE(dropped.count(), 1);
        QCOMPARE(dropped.first().first().toString(), path);
    }

    void allElseThatIsDraggedIsRefused()
    {
        QTemporaryDir folder;
        const auto written = [&folder](const QString& name, const QByteArray& content) {
            QFile file(folder.filePath(name));
            return file.open(QIODevice::WriteOnly) && file.write(content) >= 0 ? QUrl::fromLocalFile(file.fileName())
                                                                               : QUrl();
        };
        const QUrl card = written(u"card.xml"_s, "<?xml version='1.0'?><a/>");
        const QList<QList<QUrl>> refused{
            {},
            {card, card},
            {written(u"text.txt"_s, "text")},
            {written(u"picture.png"_s, "\x89PNG\r\n\x1a\n")},
            {QUrl::fromLocalFile(folder.path())},
            {QUrl::fromLocalFile(folder.filePath(u"none.xml"_s))},
            {QUrl(u"https://specimen.example/card.xml"_s)},
        };
        for (const QList<QUrl>& urls : refused) {
            QMimeData data;
            data.setUrls(urls);
            QVERIFY(!acceptsDrag(*m_window, data));
        }
        QMimeData text;
        text.setText(u"<xml/>"_s);
        QVERIFY(!acceptsDrag(*m_window, text));

        QMimeData nameless;
        nameless.setUrls({written(u"card"_s, "<?xml version='1.0'?><a/>")});
        QVERIFY(acceptsDrag(*m_window, nameless));
    }

    void nothingIsDroppedUnderTheSheet()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath(u"card.xml"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(file.fileName())});
        m_window->beginSheet(u"Lecture de la carte Vitale..."_s);
        QVERIFY(!acceptsDrag(*m_window, data));
        m_window->endSheed();
        QVERIFY(acceptsDrag(*m_window, data));
    }

    void theSheetShowsTheMessageUntilItEnds()
    {
        m_window->endSheed();
        QVERIFY(!m_window->sheet());
        m_window->beginSheet(u"Lecture de la carte Vitale..."_s);
        QVERIFY(m_window->sheet()->isVisible());
        QCOMPARE(m_window->sheet()->windowModality(), Qt::WindowModal);
        QCOMPARE(m_window->sheet()->parentWidget(), m_window.get());
        QCOMPARE(m_window->sheet()->informationsTextField()->text(), u"Lecture de la carte Vitale..."_s);
        m_window->endSheed();
        QVERIFY(!m_window->sheet()->isVisible());
        m_window->beginSheet(u"Lecture de la carte vitale en cours…"_s);
        QCOMPARE(m_window->sheet()->informationsTextField()->text(), u"Lecture de la carte vitale en cours…"_s);
        QVERIFY(m_window->sheet()->isVisible());
    }

    void theApplicationCanBeLeftWhileTheSheetIsUp()
    {
        m_window->beginSheet(u"Lecture de la carte Vitale..."_s);
        m_window->sheet()->activateWindow();
        QTRY_COMPARE(QApplication::activeWindow(), m_window->sheet());
        const QSignalSpy quit(m_window.get(), &MainWindow::quitRequested);
        QTest::keyClick(m_window->sheet(), Qt::Key_Q, Qt::ControlModifier);
        QCOMPARE(quit.count(), 1);
    }

    void closingHidesWhereSomethingBringsTheWindowBack()
    {
        const QSignalSpy last(qApp, &QGuiApplication::lastWindowClosed);
        m_window->setClosePolicy([] { return MainWindow::ClosePolicy::Hide; });
        QTest::keyClick(m_window.get(), Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!m_window->isVisible());
        QCoreApplication::processEvents();
        QCOMPARE(last.count(), 0);
    }

    void closingIconifiesWhereNothingElseWould()
    {
        QVERIFY(!m_window->close());
        QVERIFY(m_window->isVisible());
        QVERIFY(m_window->isMinimized());
        m_window->showNormal();
        m_window->setClosePolicy([] { return MainWindow::ClosePolicy::Iconify; });
        QVERIFY(!m_window->close());
        QVERIFY(m_window->isMinimized());
    }

    void theAboutBoxTellsNameVersionAndPurpose()
    {
        QCoreApplication::setApplicationVersion(u"9.8.7"_s);
        action("aboutAction")->trigger();
        const auto* box = m_window->findChild<QMessageBox*>();
        QVERIFY(box);
        QVERIFY(box->isVisible());
        QCOMPARE(box->windowModality(), Qt::WindowModal);
        QVERIFY(box->text().contains(u"Pelmora 9.8.7"_s));
        QVERIFY(box->informativeText().contains(u"attestation"_s));
        QVERIFY(!box->iconPixmap().isNull());
    }

    void withoutItsIconsTheWindowStillWorks()
    {
        const QTemporaryDir empty;
        MainWindow window{Bundle(empty.path())};
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(hasInk(shot(window, window.readButton()), window.readButton()->rect()));
    }

    void theWindowHasItsIcon() { QTRY_VERIFY(!m_window->windowIcon().isNull()); }
};

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
