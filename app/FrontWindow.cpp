#include "app/FrontWindow.h"

#include "app/windows/CardPanel.h"
#include "app/windows/MainWindow.h"
#include "attestation/print/PrintDesk.h"
#include "card/PelmoraError.h"
#include "platform/gui/WindowActivation.h"

#include <QApplication>

FrontWindow::FrontWindow(MainWindow& window, PrintDesk& printDesk)
    : m_window(window)
    , m_printDesk(printDesk)
    , m_alerts(&window)
{
}

void FrontWindow::show()
{
    bringToFront(m_window);
    m_printDesk.bringToFront();
}

void FrontWindow::bringBack()
{
    if (!m_window.isVisible() || m_window.isMinimized())
        show();
}

void FrontWindow::alertUser()
{
    QApplication::beep();
    // The request may come from the status item while another program is in front.
    if (QApplication::activeWindow() == nullptr)
        show();
    bringBack();
}

void FrontWindow::refuse(const QString& reason)
{
    alertUser();
    m_window.panel().setNotice(reason);
}

void FrontWindow::presentError(const Error& error)
{
    bringBack();
    m_window.panel().clearResult();
    m_alerts.presentError(error, PelmoraError::helpTopic(error));
}
