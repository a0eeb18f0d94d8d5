// The controller and the main window: its states, the reading of a card, the status item, help and mail.
#include "app/AppDelegate.h"
#include "app/CardSummary.h"
#include "app/DebugCopy.h"
#include "app/MainWindow.h"
#include "app/StatusItem.h"
#include "app/StatusMenu.h"
#include "platform/gui/Beep.h"
#include "platform/gui/Workspace.h"
#include "platform/update/SUUpdater.h"
#include "prefs/MVPreferences.h"
#include "prefs/MVSettings.h"
#include "support/MXButton.h"

#include <QAction>
#include <QDateTime>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView contactMailKey{u"MVContactMail"};

// Held down together while the card is asked for: a file instead of the reader.
constexpr Qt::KeyboardModifiers fileKeys = Qt::ControlModifier | Qt::AltModifier;

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

MainWindow& AppDelegate::visibleWindow()
{
    if (!m_window.isVisible() || m_window.isMinimized())
        showMainWindow(nullptr);
    return m_window;
}

void AppDelegate::readVitale(const QObject* sender)
{
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
    visibleWindow().beginSheet(message);
}

void AppDelegate::endSheed()
{
    m_window.endSheed();
}

void AppDelegate::showBinding(bool isBinding)
{
    m_window.setConnecting(isBinding);
}

void AppDelegate::beep()
{
    ::beep();
}

void AppDelegate::presentError(const Error& error)
{
    static_cast<void>(visibleWindow());
    m_alerts.presentError(error);
}

void AppDelegate::cardWasRead(const CardRecord& record)
{
    m_currentVitale = record;
    updateUI();
    m_window.setCardTime(MainWindow::CardOrigin::Reader, QDateTime::currentDateTime());
}

void AppDelegate::saveXMLIfNeeded()
{
    ::saveXMLIfNeeded(m_currentVitale,
                      MVSettings::stringPreferencesForKey(SettingsKey::attestationsFolder).value_or(QString()));
}

void AppDelegate::showStatusItem()
{
    if (m_statusItem || !MVSettings::booleanPreferencesForKey(SettingsKey::statusItemMenu))
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
        terminate();
        return;
    }
    if (tag == StatusMenu::OpenFolderTag) {
        openAttestationsFolder(nullptr);
        return;
    }
    if (!m_enabled) {
        beep();
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
        beep();
        return;
    }
    Workspace::openUrl(
        QUrl(u"mailto:"_s + contact.toString() + u"?subject=Suggestion%20pour%20le%20logiciel%20PELMORA"_s));
}

void AppDelegate::showHelp(const QObject* /*sender*/)
{
    if (const std::optional<QString> page = m_bundle.pathForResource(u"Help"_s, u"html"_s))
        Workspace::openFile(*page);
}

void AppDelegate::preferences(const QObject* /*sender*/)
{
    MVPreferences::show();
}
