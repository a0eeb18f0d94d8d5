#include "app/desktop/TrayHost.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>

#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView watcherService{"org.kde.StatusNotifierWatcher"};
constexpr QLatin1StringView watcherPath{"/StatusNotifierWatcher"};

constexpr std::uint8_t sentEventFlag = 0x80; // set in events sent by a client

/// XCB replies are freed with free().
struct Free
{
    void operator()(void* reply) const { std::free(reply); } // NOLINT(*-no-malloc)
};
template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, Free>;

xcb_intern_atom_cookie_t askForAtom(xcb_connection_t* connection, std::string_view name)
{
    return xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
}

xcb_atom_t atom(xcb_connection_t* connection, xcb_intern_atom_cookie_t cookie)
{
    const ReplyPointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// The screen of DISPLAY: each has its own tray.
int screenNumber()
{
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) == 0)
        return 0;
    const std::unique_ptr<char, Free> owner(host);
    return screen;
}

} // namespace

struct TrayHost::X11
{
    xcb_connection_t* connection = nullptr; // Qt's
    xcb_atom_t manager = XCB_ATOM_NONE;     // message type of a new selection owner
    xcb_atom_t traySelection = XCB_ATOM_NONE;
};

TrayHost::TrayHost(QObject* parent)
    : QObject(parent)
{
    watchBus();
    watchX11();
}

TrayHost::~TrayHost()
{
    if (m_x11)
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

void TrayHost::watchBus()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    const auto* const watcher =
        new QDBusServiceWatcher(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &TrayHost::askForNotifierHost);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] { setNotifierHost(false); });
    // From any sender: with a sender's name Qt would wait for its owner.
    for (const auto& signal : {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s})
        bus.connect(QString(), watcherPath, watcherService, signal, this, SLOT(askForNotifierHost()));
    askForNotifierHost();
}

void TrayHost::askForNotifierHost()
{
    QDBusMessage question =
        QDBusMessage::createMethodCall(watcherService, watcherPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question.setArguments({QString(watcherService), u"IsStatusNotifierHostRegistered"_s});
    question.setAutoStartService(false);
    auto* const call = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, &TrayHost::takeAnswer);
}

void TrayHost::takeAnswer(QDBusPendingCallWatcher* call)
{
    const QDBusPendingReply<QDBusVariant> reply = *call;
    setNotifierHost(reply.isValid() && reply.value().variant().toBool());
    call->deleteLater();
}

void TrayHost::setNotifierHost(bool isThere)
{
    if (std::exchange(m_hasNotifierHost, isThere) != isThere)
        Q_EMIT changed();
}

void TrayHost::watchX11()
{
    // Some platforms have the interface without a connection.
    const auto* const application = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* const connection = application != nullptr ? application->connection() : nullptr;
    if (connection == nullptr)
        return;
    const std::string selection = "_NET_SYSTEM_TRAY_S" + std::to_string(screenNumber());
    const xcb_intern_atom_cookie_t manager = askForAtom(connection, "MANAGER");
    const xcb_intern_atom_cookie_t traySelection = askForAtom(connection, selection);
    m_x11 = std::make_unique<X11>(connection, atom(connection, manager), atom(connection, traySelection));
    QCoreApplication::instance()->installNativeEventFilter(this);
    findX11Tray();
}

/// Finds the tray's window, and watches for its end.
void TrayHost::findX11Tray()
{
    xcb_connection_t* const connection = m_x11->connection;
    const auto owner = [&] {
        const auto cookie = xcb_get_selection_owner(connection, m_x11->traySelection);
        const ReplyPointer<xcb_get_selection_owner_reply_t> reply(
            xcb_get_selection_owner_reply(connection, cookie, nullptr));
        return reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
    };
    xcb_window_t tray = owner();
    if (tray != XCB_WINDOW_NONE) {
        const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection, tray, XCB_CW_EVENT_MASK, &events);
        // The tray may have ended before it was watched.
        tray = owner();
    }
    if (std::exchange(m_x11Tray, tray) != tray)
        Q_EMIT changed();
}

bool TrayHost::nativeEventFilter(const QByteArray& eventType, void* message, qintptr* /*result*/)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* const event = static_cast<const xcb_generic_event_t*>(message);
    const int type = event->response_type & ~sentEventFlag;
    bool isAboutTray = false;
    if (type == XCB_CLIENT_MESSAGE) {
        const auto* const announcement = static_cast<const xcb_client_message_event_t*>(message);
        isAboutTray = announcement->type == m_x11->manager && announcement->data.data32[1] == m_x11->traySelection;
    } else if (type == XCB_DESTROY_NOTIFY && m_x11Tray != 0) {
        isAboutTray = static_cast<const xcb_destroy_notify_event_t*>(message)->window == m_x11Tray;
    }
    // Later, after Qt has handled the event.
    if (isAboutTray)
        QMetaObject::invokeMethod(this, &TrayHost::findX11Tray, Qt::QueuedConnection);
    return false;
}
