// The controller and the files: the page on screen, on paper and on disk, recent files, cards from files.
#include "app/AppDelegate.h"
#include "app/desktop/StatusItem.h"
#include "app/models/CardFile.h"
#include "app/windows/CardFilePanel.h"
#include "app/windows/MainWindow.h"
#include "attestation/viewer/MVAttestationWindowController.h"
#include "platform/gui/Workspace.h"
#include "support/MXUtils.h"
#include "update/SUUpdater.h"

#include <QAction>
#include <QFileDialog>
#include <QMenu>

using namespace Qt::StringLiterals;

// Nothing happens when no card is there and none can be read: the read has told why.
void AppDelegate::whenCardIsThere(void (AppDelegate::*action)(const CardRecord&))
{
    if (refuseWhilePrintAsks())
        return;
    m_reading.readVitaleIfNeedWithCompletionHandler([this, action](bool success, const std::optional<Error>&) {
        if (!success || !m_currentVitale)
            return;
        m_window.setNotice(QString());
        (this->*action)(*m_currentVitale);
    });
}

void AppDelegate::viewAttestation(const QObject* /*sender*/)
{
    whenCardIsThere(&AppDelegate::view);
}

void AppDelegate::printAttestation(const QObject* /*sender*/)
{
    if (!refuseWhileWriting())
        whenCardIsThere(&AppDelegate::print);
}

void AppDelegate::saveAttestation(const QObject* /*sender*/)
{
    if (!refuseWhileWriting())
        whenCardIsThere(&AppDelegate::save);
}

void AppDelegate::view(const CardRecord& record)
{
    m_isViewerDue = false;
    m_attestationViewer->setVitale(record);
    m_attestationViewer->showWindow(this);
}

void AppDelegate::print(const CardRecord& record)
{
    // A read that waits for the card service would bring another card under the dialog.
    if (refuseWhileReading())
        return;
    m_printDesk.print(record, m_alerts, visibleWindow());
}

void AppDelegate::openAttestationsFolder(const QObject* /*sender*/)
{
    m_window.setNotice(QString());
    const QString folder = attestationsFolder();
    if (MXUtils::checkFolderAtPath(folder, true))
        Workspace::openFile(folder);
}

void AppDelegate::addToRecents(const QString& path)
{
    if (m_recents.add(path))
        updateRecentsMenu();
}

void AppDelegate::updateRecentsMenu()
{
    auto* menu = new QMenu(RecentAttestations::menuTitle.toString(), &m_window);
    for (const MenuEntry& entry : m_recents.menu()) {
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
    m_recents.clear();
    updateRecentsMenu();
}

void AppDelegate::openRecentAttestation(const QObject* sender)
{
    const auto* menuItem = qobject_cast<const QAction*>(sender);
    if (!menuItem)
        return;
    m_window.setNotice(QString());
    if (const std::optional<QString> path = m_recents.pathAt(menuItem->data().toInt()))
        Workspace::openFile(*path);
}

void AppDelegate::loadXMLFile()
{
    if (refuseWhileReading() || refuseWhilePrintAsks() || refuseWhileWriting())
        return;
    m_window.setNotice(QString());
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
    if (refuseWhileReading() || refuseWhilePrintAsks() || refuseWhileWriting())
        return;
    m_window.setNotice(QString());
    const std::expected<CardRecord, Error> record = loadCardFile(path);
    if (!record) {
        presentError(record.error());
        return;
    }
    m_currentVitale = *record;
    showCard(PanelLine::CardOrigin::File);
}
