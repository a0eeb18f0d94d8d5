// The controller and the files: the page on screen, on paper and on disk, recent files, cards from files.
#include "app/AppDelegate.h"
#include "app/AttestationFiles.h"
#include "app/CardFile.h"
#include "app/CardFilePanel.h"
#include "app/MainWindow.h"
#include "app/RecentAttestations.h"
#include "app/StatusItem.h"
#include "attestation/AttestationPrinting.h"
#include "attestation/MVAttestationWindowController.h"
#include "card/PelmoraError.h"
#include "platform/gui/Workspace.h"
#include "platform/update/SUUpdater.h"
#include "prefs/MVSettings.h"
#include "support/MXLog.h"
#include "support/MXUtils.h"

#include <QAction>
#include <QDateTime>
#include <QFileDialog>
#include <QMenu>

using namespace Qt::StringLiterals;

namespace {

QString attestationsFolder()
{
    return MVSettings::stringPreferencesForKey(SettingsKey::attestationsFolder).value_or(QString());
}

} // namespace

// Nothing happens when no card is there and none can be read: the read has told why.
void AppDelegate::whenCardIsThere(void (AppDelegate::*action)(const CardRecord&))
{
    m_reading.readVitaleIfNeedWithCompletionHandler([this, action](bool success, const std::optional<Error>&) {
        if (success && m_currentVitale)
            (this->*action)(*m_currentVitale);
    });
}

void AppDelegate::viewAttestation(const QObject* /*sender*/)
{
    whenCardIsThere(&AppDelegate::view);
}

void AppDelegate::printAttestation(const QObject* /*sender*/)
{
    whenCardIsThere(&AppDelegate::print);
}

void AppDelegate::saveAttestation(const QObject* /*sender*/)
{
    whenCardIsThere(&AppDelegate::save);
}

void AppDelegate::view(const CardRecord& record)
{
    m_attestationViewer->setVitale(record);
    m_attestationViewer->showWindow(this);
}

void AppDelegate::print(const CardRecord& record)
{
    ::printAttestation(record, m_logos, m_fonts, m_alerts, &visibleWindow());
}

void AppDelegate::save(const CardRecord& record)
{
    const std::expected<QString, SaveFailure> saved =
        AttestationFiles(attestationsFolder(), m_logos, m_fonts).save(record);
    if (!saved && saved.error().kind == SaveFailure::Kind::FolderUnusable) {
        beep();
        return;
    }
    if (!saved && saved.error().kind == SaveFailure::Kind::NoDocument) {
        presentError(PelmoraError::writeError());
        return;
    }
    // The path names the patient, so it stays out of the log.
    if (!saved)
        MXLog::logError("The attestation was not written: {}", saved.error().reason);

    // Said even of a file that could not be written: so it was decided for this window.
    addToRecents(saved ? *saved : saved.error().path);
    static_cast<void>(visibleWindow());
    m_alerts.presentMessage(u"Enregistrement de l'attestation"_s, u"L'attestation a bien été enregistrée."_s);
}

void AppDelegate::openAttestationsFolder(const QObject* /*sender*/)
{
    const QString folder = attestationsFolder();
    if (MXUtils::checkFolderAtPath(folder, true))
        Workspace::openFile(folder);
}

void AppDelegate::addToRecents(const QString& path)
{
    if (RecentAttestations::add(path))
        updateRecentsMenu();
}

void AppDelegate::updateRecentsMenu()
{
    auto* menu = new QMenu(RecentAttestations::menuTitle.toString(), &m_window);
    for (const MenuEntry& entry : RecentAttestations::menu()) {
        if (entry.isSeparator) {
            menu->addSeparator();
            continue;
        }
        QAction* action = menu->addAction(entry.actionText());
        action->setData(entry.tag);
        action->setEnabled(entry.enabled);
        connect(action, &QAction::triggered, this, [this, action] {
            if (action->data().toInt() == RecentAttestations::clearTag)
                clearRecentsMenu(action);
            else
                openRecentAttestation(action);
        });
    }
    m_window.recentsMenuItem()->setMenu(menu);
    // One of its entries may be what has led here.
    if (m_recentsMenu)
        m_recentsMenu->deleteLater();
    m_recentsMenu = menu;
}

void AppDelegate::clearRecentsMenu(const QObject* /*sender*/)
{
    RecentAttestations::clear();
    updateRecentsMenu();
}

void AppDelegate::openRecentAttestation(const QObject* sender)
{
    const auto* menuItem = qobject_cast<const QAction*>(sender);
    if (!menuItem)
        return;
    if (const std::optional<QString> path = RecentAttestations::pathAt(menuItem->data().toInt()))
        Workspace::openFile(*path);
}

void AppDelegate::loadXMLFile()
{
    MainWindow& window = visibleWindow();
    if (m_filePanel) {
        m_filePanel->raise();
        return;
    }
    m_filePanel = makeCardFilePanel(window, attestationsFolder());
    connect(m_filePanel, &QFileDialog::accepted, this, [this, panel = m_filePanel.get()] {
        if (const QStringList files = panel->selectedFiles(); !files.isEmpty())
            loadXMLFile(files.first());
    });
    m_filePanel->open();
}

void AppDelegate::loadXMLFile(const QString& path)
{
    const std::expected<CardRecord, Error> record = loadCardFile(path);
    if (!record) {
        presentError(record.error());
        return;
    }
    m_currentVitale = *record;
    updateUI();
    m_window.setCardTime(MainWindow::CardOrigin::File, QDateTime::currentDateTime());
}
