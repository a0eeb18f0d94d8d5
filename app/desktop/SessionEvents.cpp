#include "app/desktop/SessionEvents.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView logind{"org.freedesktop.login1"};
constexpr QLatin1StringView managerPath{"/org/freedesktop/login1"};
constexpr QLatin1StringView managerInterface{"org.freedesktop.login1.Manager"};
constexpr QLatin1StringView sessionInterface{"org.freedesktop.login1.Session"};

/// Asks for the session of this process or, when that has none (a service of the user), for the named one.
QDBusMessage sessionQuestion()
{
    const QString named = qEnvironmentVariable("XDG_SESSION_ID");
    const bool isNamed = !named.isEmpty();
    QDBusMessage question = QDBusMessage::createMethodCall(logind, managerPath, managerInterface,
                                                           isNamed ? u"GetSession"_s : u"GetSessionByPID"_s);
    question << (isNamed ? QVariant(named)
                         : QVariant::fromValue(static_cast<quint32>(QCoreApplication::applicationPid())));
    return question;
}

} // namespace

SessionEvents::SessionEvents()
    : SessionEvents(QDBusConnection::systemBus())
{
}

SessionEvents::SessionEvents(const QDBusConnection& bus)
    : m_bus(std::make_unique<QDBusConnection>(bus))
{
    if (!m_bus->isConnected())
        return;
    m_bus->connect(logind, managerPath, managerInterface, u"PrepareForSleep"_s, this, SLOT(prepareForSleep(bool)));
    auto* answer = new QDBusPendingCallWatcher(m_bus->asyncCall(sessionQuestion()), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        if (const QDBusPendingReply<QDBusObjectPath> reply = *answer; reply.isValid())
            followSession(reply.value().path());
    });
}

SessionEvents::~SessionEvents() = default;

void SessionEvents::followSession(const QString& path)
{
    m_bus->connect(logind, path, sessionInterface, u"Lock"_s, this, SIGNAL(locked()));
}

void SessionEvents::prepareForSleep(bool isStarting)
{
    if (isStarting)
        Q_EMIT aboutToSleep();
    else
        Q_EMIT resumed();
}
