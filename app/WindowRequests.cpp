#include "app/WindowRequests.h"

#include "app/AppDelegate.h"
#include "app/models/StatusMenu.h"
#include "app/windows/CardPanel.h"
#include "app/windows/MainWindow.h"

void connectRequests(MainWindow& window, AppDelegate& delegate)
{
    const auto connect = [&](auto request, auto operation) {
        QObject::connect(&window, request, &delegate, operation);
    };
    connect(&MainWindow::readRequested, [&window, &delegate] { delegate.readVitale(&window); });
    connect(&MainWindow::readCancelRequested, &AppDelegate::cancelRead);
    connect(&MainWindow::viewRequested, &AppDelegate::viewAttestation);
    connect(&MainWindow::printRequested, &AppDelegate::printAttestation);
    connect(&MainWindow::saveRequested, &AppDelegate::saveAttestation);
    connect(&MainWindow::folderRequested, &AppDelegate::openAttestationsFolder);
    connect(&MainWindow::mailRequested, &AppDelegate::sendComment);
    connect(&MainWindow::settingsRequested, &AppDelegate::preferences);
    connect(&MainWindow::helpRequested, &AppDelegate::showHelp);
    connect(&MainWindow::diagnosisRequested, [&window, &delegate] { delegate.showDiagnosis(window); });
    connect(&MainWindow::updateRequested, &AppDelegate::checkForUpdates);
    connect(&MainWindow::cardFileRequested, [&delegate] { delegate.loadXMLFile(); });
    connect(&MainWindow::cardFileDropped, [&delegate](const QString& path) { delegate.loadXMLFile(path); });
    connect(&MainWindow::cardFileDroppedInVain, &AppDelegate::refuseDrop);
    connect(&MainWindow::copyNumberRequested, &AppDelegate::copyNumber);
    connect(&MainWindow::copyNameRequested, &AppDelegate::copyName);
    connect(&MainWindow::quitRequested, &AppDelegate::quit);
    QObject::connect(&window.panel(), &CardPanel::fileRequested, &delegate, &AppDelegate::openSavedFile);
    QObject::connect(&window.panel(), &CardPanel::folderRequested, &delegate, &AppDelegate::openFolder);
}

void runStatusMenuEntry(int tag, AppDelegate& delegate)
{
    switch (tag) {
    case StatusMenu::ReadTag:
        delegate.readVitale(nullptr);
        break;
    case StatusMenu::ViewTag:
        delegate.viewAttestation();
        break;
    case StatusMenu::PrintTag:
        delegate.printAttestation();
        break;
    case StatusMenu::SaveTag:
        delegate.saveAttestation();
        break;
    case StatusMenu::OpenFolderTag:
        delegate.openAttestationsFolder();
        break;
    case StatusMenu::QuitTag:
        delegate.quit();
        break;
    default:
        break;
    }
}

void runDesktopAction(DesktopAction action, AppDelegate& delegate)
{
    switch (action) {
    case DesktopAction::Read:
        delegate.showMainWindow();
        delegate.readVitale(nullptr);
        break;
    case DesktopAction::Print:
        delegate.showMainWindow();
        delegate.printAttestation();
        break;
    case DesktopAction::OpenFolder:
        delegate.openAttestationsFolder();
        break;
    }
}
