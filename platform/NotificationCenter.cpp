#include "platform/NotificationCenter.h"

#include <algorithm>
#include <utility>

NotificationCenter& NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

void NotificationCenter::addObserver(const void* observer, const QString& name, Block block)
{
    m_observations.push_back({++m_lastNumber, observer, name, std::move(block)});
}

void NotificationCenter::removeObserver(const void* observer)
{
    std::erase_if(m_observations,
                  [observer](const Observation& observation) { return observation.observer == observer; });
}

void NotificationCenter::postNotification(const QString& name, const std::optional<QVariantMap>& userInfo)
{
    const Notification notification{name, userInfo};
    // A block may change the list. Blocks that are added meanwhile do not run, and neither do those that are removed.
    std::vector<quint64> due;
    for (const Observation& observation : m_observations) {
        if (observation.name == name)
            due.push_back(observation.number);
    }
    for (const quint64 number : due) {
        const auto found = std::ranges::find(m_observations, number, &Observation::number);
        if (found == m_observations.end())
            continue;
        const Block block = found->block;
        block(notification);
    }
}
