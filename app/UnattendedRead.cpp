#include "app/UnattendedRead.h"

#include "app/windows/CardPanel.h"
#include "app/windows/MainWindow.h"

#include <QApplication>

#include <utility>

using namespace Qt::StringLiterals;

void UnattendedRead::begin()
{
    m_isRunning = QApplication::activeWindow() == nullptr;
}

bool UnattendedRead::permitsSheet() const
{
    return !m_isRunning || (m_window.isVisible() && !m_window.isMinimized());
}

void UnattendedRead::succeed()
{
    if (std::exchange(m_isRunning, false))
        m_notification.show(u"Carte lue"_s);
}

bool UnattendedRead::fail(const Error& error)
{
    if (!std::exchange(m_isRunning, false))
        return false;
    m_window.panel().setNotice(error.localizedDescription());
    m_notification.show(error.localizedDescription());
    return true;
}
