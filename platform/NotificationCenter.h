#pragma once

#include <QVariantMap>

#include <functional>
#include <optional>
#include <vector>

struct Notification
{
    QString name;
    std::optional<QVariantMap> userInfo;
};

/// Calls the blocks that observe a notification's name. Main thread only.
class NotificationCenter
{
public:
    using Block = std::function<void(const Notification&)>;

    [[nodiscard]] static NotificationCenter& defaultCenter();

    /// The block runs at each notification of that name until the observer is removed. The pointer is only compared.
    void addObserver(const void* observer, const QString& name, Block block);

    /// Removes every block of the observer.
    void removeObserver(const void* observer);

    /// Runs the blocks now, in the order in which they were added. They may add and remove observers, and post.
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
