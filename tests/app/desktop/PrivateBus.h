#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QString>

/// A private message bus.
class PrivateBus
{
public:
    PrivateBus()
    {
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                        QStringLiteral("--print-address=1")});
        if (m_daemon.waitForReadyRead())
            m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus()
    {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

    /// Empty when the bus does not run.
    [[nodiscard]] const QString& address() const { return m_address; }
    [[nodiscard]] QDBusConnection connect(const QString& name) const
    {
        return QDBusConnection::connectToBus(m_address, name);
    }

private:
    QProcess m_daemon;
    QString m_address;
};
