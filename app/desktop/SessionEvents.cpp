#include "app/desktop/SessionEvents.h"

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

/// Asks for the named session. logind's "auto" is the process's own one or, for a service of the user, the session with
/// the display.
QDBusMessage sessionQuestion()
{
    const QString named = qEnvironmentVariable("XDG_SESSION_ID");
    QDBusMessage question = QDBusMessage::createMethodCall(logind, managerPath, managerInterface, u"GetSession"_s);
    question << (named.isEmpty() ? u"auto"_s : named);
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
