#include "app/desktop/DesktopNotification.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

using namespace Qt::StringLiterals;

/// The server's number of the notification, to replace it; 0 before there is one.
struct DesktopNotification::Shown
{
    quint32 number = 0;
};

void DesktopNotification::show(const QString& title)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    if (!m_shown)
        m_shown = std::make_shared<Shown>();
    constexpr int serversOwnTime = -1;
    const QString name = u"org.freedesktop.Notifications"_s;
    QDBusMessage call = QDBusMessage::createMethodCall(name, u"/org/freedesktop/Notifications"_s, name, u"Notify"_s);
    // Transient: the desktop does not keep it in a list.
    const QVariantMap hints{{u"desktop-entry"_s, u"com.morvel.Pelmora"_s}, {u"transient"_s, true}};
    call.setArguments({u"Pelmora"_s, QVariant::fromValue(m_shown->number), u"com.morvel.Pelmora"_s, title, QString(),
                       QStringList(), hints, serversOwnTime});
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(call));
    QObject::connect(answer, &QDBusPendingCallWatcher::finished, answer, [answer, shown = m_shown] {
        answer->deleteLater();
        if (const QDBusPendingReply<quint32> reply = *answer; reply.isValid())
            shown->number = reply.value();
    });
}
