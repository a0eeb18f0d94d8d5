#pragma once

#include "app/windows/CardPanel.h"
#include "app/windows/MainWindow.h"
#include "app/windows/ProgressSheet.h"
#include "platform/Bundle.h"
#include "support/views/MVSimpleOpaqueView.h"
#include "support/views/MXButton.h"
#include "tests/common/TestCase.h"

#include <QAction>
#include <QApplication>
#include <QIcon>
#include <QLabel>
#include <QTest>

#include <array>
#include <memory>
#include <optional>

// The expected contents of the main window, for the tests of its appearance, signals and events.

using Signal = void (MainWindow::*)();

struct ExpectedTile
{
    const char* name;
    MXButton* (MainWindow::*outlet)() const;
    QStringView title;
    std::optional<std::array<int, 3>> colour;
    Signal signal;
};

inline const std::array expectedTiles{
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
    Signal signal; // null when the window handles it itself, or an entry has a submenu
    bool cardAction;
};

inline const std::array expectedItems{
    ExpectedItem{"applicationMenu", "aboutAction", u"À propos de Pelmora", u"", nullptr, false},
    ExpectedItem{"applicationMenu", "settingsAction", u"Préférences…", u"Ctrl+,", &MainWindow::settingsRequested,
                 false},
    ExpectedItem{"applicationMenu", "recentsMenuItem", u"Recents", u"", nullptr, false},
    ExpectedItem{"applicationMenu", "updateMenuItem", u"Rechercher les mises à jour…", u"",
                 &MainWindow::updateRequested, false},
    ExpectedItem{"applicationMenu", "quitAction", u"Quitter Pelmora", u"Ctrl+Q", &MainWindow::quitRequested, false},
    ExpectedItem{"fileMenu", "readAction", u"Lire", u"Ctrl+L", &MainWindow::readRequested, true},
    ExpectedItem{"fileMenu", "viewAction", u"Voir", u"Ctrl+Shift+P", &MainWindow::viewRequested, true},
    ExpectedItem{"fileMenu", "printAction", u"Imprimer…", u"Ctrl+P", &MainWindow::printRequested, true},
    ExpectedItem{"fileMenu", "saveAction", u"Enregistrer", u"Ctrl+S", &MainWindow::saveRequested, true},
    ExpectedItem{"fileMenu", "copyNumberAction", u"Copier le numéro", u"Ctrl+Shift+C", &MainWindow::copyNumberRequested,
                 false},
    ExpectedItem{"fileMenu", "copyNameAction", u"Copier le nom", u"Ctrl+Shift+N", &MainWindow::copyNameRequested,
                 false},
    ExpectedItem{"fileMenu", "openCardAction", u"Ouvrir un fichier de carte…", u"Ctrl+O",
                 &MainWindow::cardFileRequested, false},
    ExpectedItem{"fileMenu", "folderAction", u"Ouvrir le dossier des attestations", u"Ctrl+Shift+O",
                 &MainWindow::folderRequested, false},
    ExpectedItem{"fileMenu", "closeAction", u"Fermer la fenêtre", u"Ctrl+W", nullptr, false},
    ExpectedItem{"helpMenu", "helpAction", u"Aide de Pelmora", u"F1", &MainWindow::helpRequested, false},
    ExpectedItem{"helpMenu", "diagnosisAction", u"Diagnostic…", u"", &MainWindow::diagnosisRequested, false},
    ExpectedItem{"helpMenu", "mailAction", u"Envoyer une suggestion", u"", &MainWindow::mailRequested, false},
};

// A picture of a part of the window.
inline QImage shot(MainWindow& window, const QWidget* part)
{
    return window.grab(QRect(part->mapTo(&window, QPoint()), part->size())).toImage();
}

// Whether a part of a picture has pixels of another colour than the background's.
inline bool hasInk(const QImage& picture, const QRect& part)
{
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            if (picture.pixel(x, y) != picture.pixel(0, 0))
                return true;
        }
    }
    return false;
}

/// A new window for each test, with the desktop's font and colours.
class MainWindowTest : public TestCase
{
    Q_OBJECT

protected:
    MainWindow& shown()
    {
        m_window = std::make_unique<MainWindow>(m_bundle);
        m_window->show();
        return *m_window;
    }

    /// Rows of a test with the colours of several desktops.
    static void addDesktops()
    {
        QTest::addColumn<QPalette>("desktop");
        QTest::newRow("light") << QPalette(QColor(239, 239, 239));
        QTest::newRow("dark") << QPalette(QColor(45, 45, 48));
        QTest::newRow("black") << QPalette(QColor(0, 0, 0));
    }

    QAction* action(const char* name) const { return m_window->findChild<QAction*>(QLatin1String(name)); }

    const Bundle m_bundle{QStringLiteral(PELMORA_STAGE_SHARE)};
    QFont m_font;
    QPalette m_palette;
    std::unique_ptr<MainWindow> m_window;

private Q_SLOTS:
    void initTestCase()
    {
        m_font = QApplication::font();
        m_palette = QApplication::palette();
    }

    void init() { QVERIFY(QTest::qWaitForWindowActive(&shown())); }

    void cleanup()
    {
        m_window.reset();
        QApplication::setWindowIcon(QIcon());
        QApplication::setFont(m_font);
        QApplication::setPalette(m_palette);
    }
};
