#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <cstdint>
#include <memory>

class QDBusMessage;
class QDBusPendingCallWatcher;

/// Watches for a place on the desktop where status items can show: a host of StatusNotifierItems on the session bus, or
/// an X11 system tray. Either may start and end at any time. It waits for events, polls nothing, and never waits for an
/// answer. Main thread; needs the application object.
class TrayHost final : public QObject, public QAbstractNativeEventFilter
{
    Q_OBJECT

public:
    explicit TrayHost(QObject* parent = nullptr);
    TrayHost(const TrayHost&) = delete;
    TrayHost& operator=(const TrayHost&) = delete;
    ~TrayHost() override;

    /// Whether there is a host of StatusNotifierItems.
    [[nodiscard]] bool hasNotifierHost() const { return m_hasNotifierHost; }
    /// Whether there is an X11 system tray.
    [[nodiscard]] bool hasX11Tray() const { return m_x11Tray != 0; }

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

Q_SIGNALS:
    /// One of the two has come or gone.
    void changed();

private:
    struct X11;

    void watchBus();
    // Signals of the bus are connected to by name.
    Q_INVOKABLE void askForNotifierHost();
    void takeAnswer(QDBusPendingCallWatcher* call);
    void setNotifierHost(bool isThere);

    void watchX11();
    void findX11Tray();

    bool m_hasNotifierHost = false;
    std::unique_ptr<X11> m_x11;  // absent where windows are not X11's
    std::uint32_t m_x11Tray = 0; // the tray's window
};
