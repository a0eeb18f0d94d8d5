#pragma once

#include <QObject>

#include <memory>

class QDBusConnection;

/// Events of the user's session and of the machine, from logind on the system bus. Without logind there are none. Main
/// thread only.
class SessionEvents final : public QObject
{
    Q_OBJECT

public:
    /// On the system bus, or another one.
    SessionEvents();
    explicit SessionEvents(const QDBusConnection& bus);
    Q_DISABLE_COPY(SessionEvents)
    ~SessionEvents() override;

Q_SIGNALS:
    void locked();
    void aboutToSleep();
    void resumed();

private:
    Q_SLOT void prepareForSleep(bool isStarting);
    void followSession(const QString& path);

    std::unique_ptr<QDBusConnection> m_bus;
};
