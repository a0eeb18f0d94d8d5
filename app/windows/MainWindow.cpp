#include "app/windows/MainWindow.h"

#include "app/models/ReaderHint.h"
#include "app/windows/AboutBox.h"
#include "app/windows/CardPanel.h"
#include "app/windows/DroppedCardFile.h"
#include "app/windows/FileLink.h"
#include "app/windows/ProgressSheet.h"
#include "app/windows/ScreenRoom.h"
#include "app/windows/ShowAtOnce.h"
#include "app/windows/TextSize.h"
#include "app/windows/WindowIcon.h"
#include "platform/Bundle.h"
#include "support/views/ArrowKeys.h"
#include "support/views/GlyphIcon.h"
#include "ui_MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QRubberBand>
#include <QTimer>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using Request = void (MainWindow::*)();

struct Tile
{
    MXButton* Ui_MainWindow::* button = nullptr;
    std::optional<QColor> colour;
    QLatin1String icon;
    Request request = nullptr;
};

// Text sizes relative to the desktop's.
constexpr double titleSize = 1.2;
constexpr double largeSize = 1.4;

// The window's size, and the size of text up to which the content fits into it, both in pixels.
constexpr QSize usualSize(608, 464);
constexpr double largestUsualText = 18;

constexpr std::array tiles{
    Tile{&Ui_MainWindow::readButton, QColor{0, 162, 1}, "ReadIcon"_L1, &MainWindow::readRequested},
    Tile{&Ui_MainWindow::viewButton, QColor{146, 39, 221}, "ViewIcon"_L1, &MainWindow::viewRequested},
    Tile{&Ui_MainWindow::printButton, QColor{223, 0, 19}, "PrintIcon"_L1, &MainWindow::printRequested},
    Tile{&Ui_MainWindow::saveButton, QColor{0, 160, 211}, "SaveIcon"_L1, &MainWindow::saveRequested},
    Tile{&Ui_MainWindow::mailButton, QColor{250, 104, 12}, "MailIcon"_L1, &MainWindow::mailRequested},
    Tile{&Ui_MainWindow::settingsButton, QColor{88, 88, 88}, "SettingsIcon"_L1, &MainWindow::settingsRequested},
    Tile{&Ui_MainWindow::quitButton, std::nullopt, "QuitIcon"_L1, &MainWindow::quitRequested},
};

struct MenuItem
{
    QAction* Ui_MainWindow::* action = nullptr;
    Request request = nullptr;
    bool isCardAction = false;
};

constexpr std::array menuItems{
    MenuItem{&Ui_MainWindow::readAction, &MainWindow::readRequested, true},
    MenuItem{&Ui_MainWindow::viewAction, &MainWindow::viewRequested, true},
    MenuItem{&Ui_MainWindow::printAction, &MainWindow::printRequested, true},
    MenuItem{&Ui_MainWindow::saveAction, &MainWindow::saveRequested, true},
    MenuItem{&Ui_MainWindow::copyNumberAction, &MainWindow::copyNumberRequested},
    MenuItem{&Ui_MainWindow::copyNameAction, &MainWindow::copyNameRequested},
    MenuItem{&Ui_MainWindow::openCardAction, &MainWindow::cardFileRequested},
    MenuItem{&Ui_MainWindow::folderAction, &MainWindow::folderRequested},
    MenuItem{&Ui_MainWindow::settingsAction, &MainWindow::settingsRequested},
    MenuItem{&Ui_MainWindow::updateMenuItem, &MainWindow::updateRequested},
    MenuItem{&Ui_MainWindow::quitAction, &MainWindow::quitRequested},
    MenuItem{&Ui_MainWindow::helpAction, &MainWindow::helpRequested},
    MenuItem{&Ui_MainWindow::diagnosisAction, &MainWindow::diagnosisRequested},
    MenuItem{&Ui_MainWindow::mailAction, &MainWindow::mailRequested},
};

} // namespace

MainWindow::MainWindow(const Bundle& bundle, Appearance appearance, QWidget* parent)
    : QMainWindow(parent)
    , m_ui(std::make_unique<Ui::MainWindow>())
{
    // Looking for a native menu bar costs a call on the session bus.
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeMenuBar);
    resize(boundedToScreen(*this, usualSize));
    if (appearance == Appearance::AtOnce && textSize(*this) <= largestUsualText)
        showAtOnce(*this);
    m_ui->setupUi(this);
    m_panel = std::make_unique<CardPanel>(
        CardPanel::Widgets{*m_ui->vitaleInfoView, *m_ui->vitaleInfoTextField, *m_ui->panelLineField});
    setTabOrder(m_ui->readButton, &m_ui->panelLineField->link());
    setTabOrder(&m_ui->panelLineField->link(), m_ui->viewButton);
    QList<QWidget*> buttons;
    for (const Tile& tile : tiles)
        buttons.append(*m_ui.*tile.button);
    m_arrowKeys = std::make_unique<ArrowKeys>(buttons);
    // Closing this window never quits.
    setAttribute(Qt::WA_QuitOnClose, false);
    m_dropOutline = new QRubberBand(QRubberBand::Rectangle, this);
    setUpTexts();
    setUpIcons(bundle);
    connectRequests();
    addCopyMenuTo(*m_ui->vitaleInfoView);
    initUI();
    m_ui->readButton->setFocus();
    // Qt hides widgets that are added to a visible window.
    if (isVisible()) {
        centralWidget()->show();
        menuBar()->show();
    }
}

MainWindow::~MainWindow() = default;

void MainWindow::initUI()
{
    for (const Tile& tile : tiles)
        (*m_ui.*tile.button)->setBackgroundColor(tile.colour);
    m_panel->clear();
}

void MainWindow::setUpTexts()
{
    // Few fonts, because each costs time at the start.
    const QFont title = scaledFont(font(), titleSize, QFont::Bold);
    for (const Tile& tile : tiles) {
        (*m_ui.*tile.button)->setFont(title);
        m_toolTips.append((*m_ui.*tile.button)->toolTip());
    }
    m_ui->headingLabel->setFont(title);
    m_ui->readButton->setFont(scaledFont(font(), largeSize, QFont::Bold));
    m_ui->vitaleInfoTextField->setFont(scaledFont(font(), largeSize));

    // Equal columns, also at the minimum size.
    int widest = 0;
    for (const Tile& tile : tiles)
        widest = std::max(widest, (*m_ui.*tile.button)->minimumSizeHint().width());
    for (int column = 0; column < m_ui->tiles->columnCount(); ++column)
        m_ui->tiles->setColumnMinimumWidth(column, widest);
}

void MainWindow::setUpIcons(const Bundle& bundle)
{
    for (const Tile& tile : tiles)
        (*m_ui.*tile.button)->setIcon(glyphIcon(bundle.pathForResource(tile.icon, u"svg"_s).value_or(QString())));
    m_windowIconPath = bundle.pathForResource(u"PelmoraIcon"_s, u"svg"_s).value_or(QString());
}

void MainWindow::connectRequests()
{
    for (const Tile& tile : tiles)
        connect(*m_ui.*tile.button, &QPushButton::clicked, this, tile.request);
    for (const MenuItem& item : menuItems)
        connect(*m_ui.*item.action, &QAction::triggered, this, item.request);
    connect(m_ui->aboutAction, &QAction::triggered, this, [this] { showAboutBox(this); });
    connect(m_ui->vitaleInfoView, &MVSimpleOpaqueView::clicked, m_ui->viewAction, &QAction::trigger);
    connect(m_ui->closeAction, &QAction::triggered, this, &QWidget::close);
}

void MainWindow::enableTiles()
{
    for (const Tile& tile : tiles)
        (*m_ui.*tile.button)->setEnabled(true);
    showToolTips();
}

void MainWindow::disableCardTiles()
{
    for (MXButton* button : {m_ui->viewButton, m_ui->printButton, m_ui->saveButton, m_ui->quitButton})
        button->setEnabled(false);
    showToolTips();
}

void MainWindow::setReader(const ReaderChange& change)
{
    m_reader = change.state;
    m_panel->setReader(change);
    showToolTips();
}

void MainWindow::showToolTips()
{
    for (qsizetype index = 0; const Tile& tile : tiles) {
        MXButton* button = *m_ui.*tile.button;
        button->setToolTip(button->isEnabled() ? m_toolTips.at(index) : disabledTileText(m_reader));
        ++index;
    }
}

void MainWindow::validateMenuItems(const std::function<bool(const QAction&)>& validateMenuItem)
{
    for (const MenuItem& item : menuItems) {
        QAction* action = *m_ui.*item.action;
        action->setEnabled(validateMenuItem(*action));
    }
}

bool MainWindow::isCardAction(const QAction& menuItem) const
{
    return std::ranges::any_of(menuItems, [this, &menuItem](const MenuItem& item) {
        return item.isCardAction && *m_ui.*item.action == &menuItem;
    });
}

void MainWindow::addShortcutsTo(QWidget& window) const
{
    const QList<QAction*> own = window.findChildren<QAction*>();
    for (const MenuItem& item : menuItems) {
        QAction* action = *m_ui.*item.action;
        const bool isOwn = std::ranges::any_of(
            own, [action](const QAction* other) { return other->shortcuts().contains(action->shortcut()); });
        if (!action->shortcut().isEmpty() && !isOwn)
            window.addAction(action);
    }
}

void MainWindow::addCopyMenuTo(QWidget& widget)
{
    widget.setContextMenuPolicy(Qt::CustomContextMenu);
    connect(&widget, &QWidget::customContextMenuRequested, this, [this, &widget](const QPoint& place) {
        auto* menu = new QMenu(&widget);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->addActions({m_ui->copyNumberAction, m_ui->copyNameAction});
        menu->popup(widget.mapToGlobal(place));
    });
}

void MainWindow::beginSheet(const QString& message)
{
    m_panel->beginRequest();
    if (!m_sheet) {
        m_sheet = std::make_unique<ProgressSheet>(this);
        // Quitting stays possible while a reader does not answer.
        m_sheet->addAction(m_ui->quitAction);
        connect(m_sheet.get(), &ProgressSheet::cancelRequested, this, &MainWindow::readCancelRequested);
    }
    m_sheet->begin(message);
}

void MainWindow::endSheed()
{
    if (m_sheet)
        m_sheet->end();
    // The notice was about this read.
    m_panel->setNotice(QString());
}

void MainWindow::setClosePolicy(std::function<ClosePolicy()> policy)
{
    m_closePolicy = std::move(policy);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (m_closePolicy && m_closePolicy() == ClosePolicy::Hide) {
        event->accept();
        return;
    }
    event->ignore();
    showMinimized();
}

bool MainWindow::isBlocked() const
{
    const QWidget* modal = QApplication::activeModalWidget();
    return modal && (modal->windowModality() == Qt::ApplicationModal || modal->parentWidget() == this);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (isBlocked() || !droppedCardFile(*event->mimeData()))
        return;
    event->acceptProposedAction();
    m_dropOutline->setGeometry(rect());
    m_dropOutline->show();
}

void MainWindow::dragLeaveEvent(QDragLeaveEvent* /*event*/)
{
    m_dropOutline->hide();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    m_dropOutline->hide();
    const std::optional<QString> path = droppedCardFile(*event->mimeData());
    if (!path)
        return;
    // Blocked since the drag entered the window; later drags are refused at once.
    if (isBlocked()) {
        Q_EMIT cardFileDroppedInVain();
        return;
    }
    event->acceptProposedAction();
    Q_EMIT cardFileDropped(*path);
}

void MainWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    // After the window is shown, to save time.
    if (!m_windowIconPath.isEmpty())
        QTimer::singleShot(0, this, &MainWindow::showWindowIcon);
}

void MainWindow::showWindowIcon()
{
    if (m_windowIconPath.isEmpty())
        return;
    const QIcon icon = windowIconFrom(std::exchange(m_windowIconPath, QString()));
    setWindowIcon(icon);
    // For later windows too.
    QGuiApplication::setWindowIcon(icon);
}

MXButton* MainWindow::readButton() const
{
    return m_ui->readButton;
}

MXButton* MainWindow::viewButton() const
{
    return m_ui->viewButton;
}

MXButton* MainWindow::printButton() const
{
    return m_ui->printButton;
}

MXButton* MainWindow::saveButton() const
{
    return m_ui->saveButton;
}

MXButton* MainWindow::quitButton() const
{
    return m_ui->quitButton;
}

MXButton* MainWindow::mailButton() const
{
    return m_ui->mailButton;
}

MXButton* MainWindow::settingsButton() const
{
    return m_ui->settingsButton;
}

MVSimpleOpaqueView* MainWindow::vitaleInfoView() const
{
    return m_ui->vitaleInfoView;
}

QLabel* MainWindow::vitaleInfoTextField() const
{
    return m_ui->vitaleInfoTextField;
}

QAction* MainWindow::recentsMenuItem() const
{
    return m_ui->recentsMenuItem;
}

QAction* MainWindow::quitAction() const
{
    return m_ui->quitAction;
}

QAction* MainWindow::updateMenuItem() const
{
    return m_ui->updateMenuItem;
}
