#include "app/FollowingViewer.h"

#include <QTimer>

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

FollowingViewer::FollowingViewer(std::unique_ptr<MVAttestationWindowController> viewer)
    : m_viewer(std::move(viewer))
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

void FollowingViewer::show(const CardRecord& record)
{
    m_due.reset();
    m_viewer->setVitale(record);
    m_viewer->showWindow(this);
}
