#pragma once

#include <QString>
#include <QVariantMap>

#include <functional>
#include <optional>
#include <vector>

/// Something that happened, told to whoever observes its name.
struct Notification
{
    QString name;
    std::optional<QVariantMap> userInfo;
};

/// Tells observers what happened, by name. Main thread only.
class NotificationCenter
{
public:
    using Block = std::function<void(const Notification&)>;

    /// The process-wide centre, made at first use.
    [[nodiscard]] static NotificationCenter& defaultCenter();

    /// The block runs at each notification of that name until the observer is removed. The observer is only an
    /// identity.
    void addObserver(const void* observer, const QString& name, Block block);

    /// Removes every block of the observer, if it has any; none of them runs afterwards.
    void removeObserver(const void* observer);

    /// Runs the blocks at once, in the order in which they were added. Those may add and remove observers, and post.
    void postNotification(const QString& name, const std::optional<QVariantMap>& userInfo = std::nullopt);

private:
    struct Observation
    {
        quint64 number;
        const void* observer;
        QString name;
        Block block;
    };

    std::vector<Observation> m_observations;
    quint64 m_lastNumber = 0;
};
