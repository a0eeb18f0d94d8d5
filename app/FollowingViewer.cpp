#include "app/FollowingViewer.h"

#include <QTimer>

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

// The summary is painted by then: Qt collects what is to be painted for a few milliseconds.
constexpr auto untilPainted = 50ms;

} // namespace

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
        QTimer::singleShot(untilPainted, this, &FollowingViewer::update);
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
