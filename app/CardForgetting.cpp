#include "app/CardForgetting.h"

#include "app/CardOccupation.h"
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

void CardForgetting::sessionLeft()
{
    if (MVSettings::booleanPreferencesForKey(m_settings, Settings::forgetOnLock))
        forget();
}

void CardForgetting::followSettings()
{
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
