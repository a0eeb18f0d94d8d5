#include "app/desktop/ReopenService.h"

#include "app/desktop/ActivationToken.h"
#include "platform/NativePath.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView serviceName{"com.morvel.Pelmora"};
constexpr QLatin1StringView objectPath{"/com/morvel/Pelmora"};

/// Calls the bus without waiting for the answer.
void askBus(const QString& operation, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                                          u"org.freedesktop.DBus"_s, operation);
    message.setArguments(arguments);
    QDBusConnection::sessionBus().asyncCall(message);
}

// As the interface names it.
void useTokenOf(const QVariantMap& platformData)
{
    ActivationToken::use(platformData.value(u"activation-token"_s).toString());
}

} // namespace

ReopenService::ReopenService(QObject* parent)
    : QObject(parent)
{
}

ReopenService::~ReopenService()
{
    if (!m_isStarted)
        return;
    QDBusConnection::sessionBus().unregisterObject(objectPath);
    askBus(u"ReleaseName"_s, {QString(serviceName)});
}

void ReopenService::start()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (m_isStarted || !bus.isConnected())
        return;
    m_isStarted =
        bus.registerObject(objectPath, new ReopenInterface(this), QDBusConnection::ExportScriptableInvokables);
    // Without flags: queued behind another owner, and not replaceable.
    if (m_isStarted)
        askBus(u"RequestName"_s, {QString(serviceName), QVariant::fromValue(quint32{0})});
}

ReopenInterface::ReopenInterface(ReopenService* service)
    : QObject(service)
    , m_service(service)
{
}

QString ReopenInterface::firstLocalFile(const QStringList& uris)
{
    for (const QString& uri : uris) {
        if (const std::optional<QString> path = pathOfUrl(QUrl(uri, QUrl::StrictMode)))
            return *path;
    }
    return {};
}

void ReopenInterface::Activate(const QVariantMap& platformData)
{
    useTokenOf(platformData);
    Q_EMIT m_service->reopenRequested();
}

void ReopenInterface::Open(const QStringList& uris, const QVariantMap& platformData)
{
    useTokenOf(platformData);
    if (const QString path = firstLocalFile(uris); !path.isEmpty())
        Q_EMIT m_service->openRequested(path);
    else
        Q_EMIT m_service->reopenRequested();
}

void ReopenInterface::ActivateAction(const QString& name, [[maybe_unused]] const QVariantList& parameter,
                                     const QVariantMap& platformData)
{
    useTokenOf(platformData);
    if (const std::optional<DesktopAction> action = desktopActionOf(name))
        Q_EMIT m_service->actionRequested(*action);
    else
        Q_EMIT m_service->reopenRequested();
}
