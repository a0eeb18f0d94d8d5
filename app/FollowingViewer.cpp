#include "app/FollowingViewer.h"

#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

int leftBeside(const QRect& other, const QRect& moved, const QRect& screen)
{
    const auto covered = [&](int left) {
        const QRect common = other & QRect(QPoint(left, moved.top()), moved.size());
        return common.width() * common.height();
    };
    if (2 * covered(moved.left()) <= other.width() * other.height())
        return moved.left();
    const int right = std::min(other.left() + other.width(), screen.left() + screen.width() - moved.width());
    const int left = std::max(other.left() - moved.width(), screen.left());
    return covered(left) < covered(right) ? left : right;
}

FollowingViewer::FollowingViewer(std::unique_ptr<MVAttestationWindowController> viewer, const QWidget& mainWindow)
    : m_viewer(std::move(viewer))
    , m_mainWindow(mainWindow)
{
}

void FollowingViewer::follow(const CardRecord& record)
{
    m_due = record;
    if (m_viewer->window()->isVisible())
        update();
    else
        QTimer::singleShot(50ms, this, &FollowingViewer::update); // Qt delays painting by a few milliseconds
}

void FollowingViewer::update()
{
    if (const std::optional<CardRecord> due = std::exchange(m_due, std::nullopt))
        m_viewer->setVitale(*due);
}

void FollowingViewer::forget()
{
    m_due.reset();
    m_viewer->window()->close();
    m_viewer->setVitale(CardRecord());
}

void FollowingViewer::show(const CardRecord& record)
{
    m_due.reset();
    m_viewer->setVitale(record);
    placeOnce();
    m_viewer->showWindow(this);
}

// The window was centred when it was loaded. Later its place is the user's.
void FollowingViewer::placeOnce()
{
    if (std::exchange(m_isPlaced, true) || !m_mainWindow.isVisible())
        return;
    QWidget& window = *m_viewer->window();
    const QRect frame = window.frameGeometry();
    window.move(leftBeside(m_mainWindow.frameGeometry(), frame, m_mainWindow.screen()->availableGeometry()),
                frame.top());
}
