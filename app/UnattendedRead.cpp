#include "app/UnattendedRead.h"

#include "app/windows/MainWindow.h"

#include <QApplication>

#include <utility>

void UnattendedRead::begin()
{
    m_isRunning = QApplication::activeWindow() == nullptr;
}

bool UnattendedRead::permitsSheet() const
{
    return !m_isRunning || (m_window.isVisible() && !m_window.isMinimized());
}

void UnattendedRead::tell(const QString& outcome)
{
    if (std::exchange(m_isRunning, false))
        m_notification.show(outcome);
}
