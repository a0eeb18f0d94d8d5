#include "attestation/viewer/MVAttestationWindowController.h"

#include "attestation/print/PrintDesk.h"
#include "attestation/viewer/MVNewAttestationView.h"
#include "attestation/viewer/MVScrollView.h"
#include "card/CardKeys.h"
#include "platform/ObjectText.h"
#include "platform/gui/WindowActivation.h"
#include "ui_AttestationWindow.h"

#include <QScreen>
#include <QStyle>

namespace {

constexpr QMargins airAroundPage{10, 10, 10, 10}; // points

// The window's size without its title bar: content and bar.
QSize windowSizeForContent(const QMainWindow& window, QSize content)
{
    return window.sizeHint() - window.centralWidget()->sizeHint() + content;
}

// Centres the window on its screen and limits its size.
void centerOnScreen(QMainWindow& window)
{
    const QRect available = window.screen()->availableGeometry();
    // The real height is not known before the window is shown.
    const QSize titleBar(0, window.style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &window));
    window.resize(window.size().boundedTo(available.size() - titleBar));
    QRect frame(QPoint(), window.size() + titleBar);
    frame.moveCenter(available.center());
    window.move(frame.topLeft());
}

} // namespace

MVAttestationWindowController::MVAttestationWindowController(const UserDefaults& settings, SchemeLogos& logos,
                                                             const PageFonts& fonts, PrintDesk& printDesk,
                                                             QObject* parent)
    : QObject(parent)
    , m_fonts(fonts)
    , m_printDesk(printDesk)
    , m_attestation(settings, logos)
    , m_window(std::make_unique<QMainWindow>())
    , m_alerts(m_window.get())
{
    Ui::AttestationWindow layout;
    layout.setupUi(m_window.get());
    m_scrollView = layout.scrollView;
    layout.clipView->awakeFromNib();
    connectActions(*layout.printAction, *layout.saveAction, *layout.closeAction);
    for (QAction* action : layout.bar->actions())
        layout.bar->widgetForAction(action)->setFocusPolicy(Qt::TabFocus);
    internalInit();
}

MVAttestationWindowController::~MVAttestationWindowController() = default;

void MVAttestationWindowController::internalInit()
{
    MVNewAttestationView* page = MVNewAttestationView::viewOf(m_attestation, m_fonts).release();
    m_scrollView->setDocumentView(page);
    page->setFocus();
    const QRect content = page->rect().marginsAdded(airAroundPage);
    m_window->resize(windowSizeForContent(*m_window, content.size()));
    centerOnScreen(*m_window);
}

void MVAttestationWindowController::connectActions(QAction& print, QAction& save, QAction& close)
{
    connect(&print, &QAction::triggered, this, [this, &print] { printAttestation(&print); });
    connect(&save, &QAction::triggered, this, &MVAttestationWindowController::saveRequested);
    close.setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_W), QKeySequence(Qt::Key_Escape)});
    connect(&close, &QAction::triggered, m_window.get(), &QWidget::close);
}

void MVAttestationWindowController::setVitale(const CardRecord& vitale)
{
    m_attestation.setVitale(vitale);
    // First name first; on the page it is the surname, on purpose.
    m_window->setWindowTitle(objectText(vitale.text(CardKey::firstName)) + u' ' +
                             objectText(vitale.text(CardKey::lastName)));
}

void MVAttestationWindowController::printAttestation(const QObject* /*sender*/)
{
    if (m_printDesk.mayPrint())
        m_printDesk.print(vitale(), m_alerts, *m_window);
}

void MVAttestationWindowController::showWindow(const QObject* /*sender*/)
{
    bringToFront(*m_window);
}
