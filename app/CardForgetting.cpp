#include "app/CardForgetting.h"

#include "app/CardOccupation.h"
#include "app/desktop/SessionEvents.h"
#include "prefs/settings/MVSettings.h"

#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr qint64 longestTime = qint64{24} * 60; // minutes
constexpr auto occupiedInterval = 500ms;

} // namespace

CardForgetting::CardForgetting(const UserDefaults& settings, const CardOccupation& occupation)
    : m_settings(settings)
    , m_occupation(occupation)
{
    m_time.setSingleShot(true);
    m_occupied.setSingleShot(true);
    m_occupied.setInterval(occupiedInterval);
    connect(&m_time, &QTimer::timeout, this, &CardForgetting::forget);
    connect(&m_occupied, &QTimer::timeout, this, &CardForgetting::forget);
}

CardForgetting::~CardForgetting() = default;

void CardForgetting::cardShown(PanelLine::CardOrigin origin)
{
    m_shown = origin;
    m_occupied.stop();
    restartTime();
}

void CardForgetting::cardLeft()
{
    const bool isFromReader = m_shown == PanelLine::CardOrigin::Reader;
    if (isFromReader && MVSettings::booleanPreferencesForKey(m_settings, Settings::forgetOnRemoval))
        forget();
}

void CardForgetting::followSettings()
{
    if (!MVSettings::booleanPreferencesForKey(m_settings, Settings::forgetOnLock)) {
        m_session.reset();
    } else if (!m_session) {
        m_session = std::make_unique<SessionEvents>();
        connect(m_session.get(), &SessionEvents::locked, this, &CardForgetting::forget);
        connect(m_session.get(), &SessionEvents::aboutToSleep, this, &CardForgetting::forget);
        connect(m_session.get(), &SessionEvents::resumed, this, &CardForgetting::resumed);
    }
    restartTime();
}

void CardForgetting::restartTime()
{
    // A value written by hand may be any number.
    const qint64 minutes =
        std::min(MVSettings::integerPreferencesForKey(m_settings, Settings::forgetAfterMinutes), longestTime);
    if (minutes > 0 && m_shown)
        m_time.start(std::chrono::minutes(minutes));
    else
        m_time.stop();
}

void CardForgetting::forget()
{
    if (!m_shown)
        return;
    if (m_occupation.firstOf(CardOccupation::anything) != CardOccupation::By::Nothing) {
        m_occupied.start();
        return;
    }
    m_shown.reset();
    m_time.stop();
    m_occupied.stop();
    Q_EMIT due();
}
