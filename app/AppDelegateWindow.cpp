// The controller and the main window: its states, the reading of a card, the status item, help and mail.
#include "app/AppDelegate.h"
#include "app/desktop/StatusItem.h"
#include "app/models/CardSummary.h"
#include "app/models/StatusMenu.h"
#include "app/windows/MainWindow.h"
#include "attestation/viewer/MVAttestationWindowController.h"
#include "platform/gui/Beep.h"
#include "platform/gui/Workspace.h"
#include "prefs/MVPreferences.h"
#include "prefs/settings/MVSettings.h"
#include "support/views/MXButton.h"
#include "update/SUUpdater.h"

#include <QAction>
#include <QApplication>
#include <QDateTime>
#include <QFileDialog>
#include <QLabel>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr QStringView contactMailKey{u"MVContactMail"};

// Held down together while the card is asked for: a file instead of the reader.
constexpr Qt::KeyboardModifiers fileKeys = Qt::ControlModifier | Qt::AltModifier;

// The summary is painted by then: Qt collects what is to be painted for a few milliseconds.
constexpr auto untilPainted = 50ms;

} // namespace

void AppDelegate::initUI()
{
    m_window.initUI();
}

void AppDelegate::disableUI()
{
    // Reading stays possible, as it binds again; leaving by the tile does not.
    for (MXButton* button :
         {m_window.viewButton(), m_window.printButton(), m_window.saveButton(), m_window.quitButton()})
        button->setEnabled(false);
    setEnabled(false);
}

void AppDelegate::enableUI()
{
    for (MXButton* button :
         {m_window.readButton(), m_window.viewButton(), m_window.printButton(), m_window.saveButton(),
          m_window.quitButton(), m_window.mailButton(), m_window.settingsButton()})
        button->setEnabled(true);
    setEnabled(true);
    m_window.setNotice(QString());
}

void AppDelegate::setEnabled(bool enabled)
{
    m_enabled = enabled;
    m_window.validateMenuItems([this](const QAction& menuItem) { return validateMenuItem(menuItem); });
}

bool AppDelegate::validateMenuItem(const QAction& menuItem) const
{
    return m_enabled || !m_window.isCardAction(menuItem);
}

void AppDelegate::updateUI()
{
    m_window.vitaleInfoTextField()->setText(cardSummary(m_currentVitale));
}

void AppDelegate::showCard(PanelLine::CardOrigin origin)
{
    updateUI();
    m_window.setCardTime(origin, QDateTime::currentDateTime());
    m_isViewerDue = m_attestationViewer != nullptr;
    // A hidden viewer follows once the summary is painted: that is what people wait for.
    if (m_isViewerDue && m_attestationViewer->window()->isVisible())
        updateViewer();
    else
        QTimer::singleShot(untilPainted, this, &AppDelegate::updateViewer);
}

void AppDelegate::updateViewer()
{
    if (std::exchange(m_isViewerDue, false) && m_currentVitale)
        m_attestationViewer->setVitale(*m_currentVitale);
}

// At the end of a read its card would take the place of the one that was shown.
bool AppDelegate::refuseWhileReading()
{
    if (m_reading.isUnderWay())
        refuse(u"Demande refusée pendant la lecture d’une carte."_s);
    return m_reading.isUnderWay();
}

// What is printed is the card that the windows show: it stays until the print has its answer.
bool AppDelegate::refuseWhilePrintAsks()
{
    if (!m_printDesk.isAsking())
        return false;
    refuse(u"Demande refusée pendant l’impression\u00A0: confirmez ou annulez d’abord celle-ci."_s);
    m_printDesk.bringToFront();
    return true;
}

void AppDelegate::refuseDrop()
{
    if (!refuseWhileReading() && !refuseWhilePrintAsks() && !refuseWhileWriting())
        refuse(u"Fichier refusé\u00A0: fermez d’abord la fenêtre ouverte devant celle-ci."_s);
}

// The viewer prints what it shows, which must be the current card, and stay so.
bool AppDelegate::permitPrint()
{
    if (refuseWhileReading() || refuseWhilePrintAsks() || refuseWhileWriting())
        return false;
    m_window.setNotice(QString());
    updateViewer();
    return true;
}

MainWindow& AppDelegate::visibleWindow()
{
    if (!m_window.isVisible() || m_window.isMinimized())
        showMainWindow(nullptr);
    return m_window;
}

void AppDelegate::readVitale(const QObject* sender)
{
    if (refuseWhilePrintAsks() || refuseWhileWriting())
        return;
    // Without a sender there may be no event either that would tell of keys: status items speak over the session bus.
    const Qt::KeyboardModifiers keys =
        sender ? QGuiApplication::keyboardModifiers() : QGuiApplication::queryKeyboardModifiers();
    if ((keys & fileKeys) == fileKeys)
        loadXMLFile();
    else
        m_reading.readVitale();
}

void AppDelegate::beginSheet(const QString& message)
{
    m_window.setNotice(QString());
    visibleWindow().beginSheet(message);
}

void AppDelegate::endSheed()
{
    m_window.endSheed();
    // It was about this read.
    m_window.setNotice(QString());
}

void AppDelegate::showBinding(bool isBinding)
{
    m_window.setConnecting(isBinding);
}

void AppDelegate::refuse(const QString& reason)
{
    alertUser();
    m_window.setNotice(reason);
}

void AppDelegate::alertUser()
{
    beep();
    // What the window says about it is to be seen: it may be the status bar that has asked, over other programs.
    if (QApplication::activeWindow() == nullptr)
        showMainWindow(nullptr);
    static_cast<void>(visibleWindow());
}

void AppDelegate::presentError(const Error& error)
{
    static_cast<void>(visibleWindow());
    m_alerts.presentError(error);
}

void AppDelegate::cardWasRead(const CardRecord& record)
{
    m_currentVitale = record;
    showCard(PanelLine::CardOrigin::Reader);
}

void AppDelegate::readFailed()
{
    m_window.setNotice(QString());
    m_window.setReadFailed(QDateTime::currentDateTime());
}

void AppDelegate::readCancelled()
{
    m_window.setNotice(QString());
    m_window.setReadCancelled(QDateTime::currentDateTime());
}

void AppDelegate::showStatusItem()
{
    if (m_statusItem || !MVSettings::booleanPreferencesForKey(m_settings, Settings::statusItemMenu))
        return;
    const QString icon = m_bundle.pathForResource(u"StatusItemIcon"_s, u"svg"_s).value_or(QString());
    m_statusItem = std::make_unique<StatusItem>(QIcon(icon));
    connect(m_statusItem.get(), &StatusItem::executeAction, this, &AppDelegate::executeAction);
    connect(m_statusItem.get(), &StatusItem::showRequested, this, [this] { showMainWindow(m_statusItem.get()); });
    connect(m_statusItem.get(), &StatusItem::hostAvailableChanged, this, [this](bool available) {
        // Nothing else could bring a hidden window back.
        if (!available)
            static_cast<void>(visibleWindow());
    });
}

void AppDelegate::hideStatusItem()
{
    m_statusItem.reset();
    if (!m_window.isVisible())
        showMainWindow(nullptr);
}

void AppDelegate::executeAction(const QObject* sender)
{
    const auto* menuItem = qobject_cast<const QAction*>(sender);
    if (!menuItem)
        return;
    const int tag = menuItem->data().toInt();
    if (tag == StatusMenu::QuitTag) {
        quit();
        return;
    }
    if (tag == StatusMenu::OpenFolderTag) {
        openAttestationsFolder(nullptr);
        return;
    }
    if (!m_enabled) {
        refuse(u"Le lecteur de cartes n’est pas prêt. Appuyez sur Lire."_s);
        return;
    }
    switch (tag) {
    case StatusMenu::ReadTag:
        readVitale(nullptr);
        break;
    case StatusMenu::ViewTag:
        viewAttestation(nullptr);
        break;
    case StatusMenu::PrintTag:
        printAttestation(nullptr);
        break;
    case StatusMenu::SaveTag:
        saveAttestation(nullptr);
        break;
    default:
        break;
    }
}

void AppDelegate::sendComment(const QObject* /*sender*/)
{
    const QVariant contact = m_bundle.objectForInfoDictionaryKey(contactMailKey);
    if (contact.typeId() != QMetaType::QString) {
        refuse(u"Aucune adresse n’est connue pour les suggestions."_s);
        return;
    }
    m_window.setNotice(QString());
    Workspace::openUrl(
        QUrl(u"mailto:"_s + contact.toString() + u"?subject=Suggestion%20pour%20le%20logiciel%20PELMORA"_s));
}

void AppDelegate::showHelp(const QObject* /*sender*/)
{
    m_window.setNotice(QString());
    if (const std::optional<QString> page = m_bundle.pathForResource(u"Help"_s, u"html"_s))
        Workspace::openFile(*page);
}

void AppDelegate::preferences(const QObject* /*sender*/)
{
    m_window.setNotice(QString());
    MVPreferences::show();
}
