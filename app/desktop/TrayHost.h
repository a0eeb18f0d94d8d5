#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

#include <cstdint>
#include <memory>

class QDBusPendingCallWatcher;

/// Watches for a host of status items: a StatusNotifierItem host on the session bus, or an X11 system tray. Hosts may
/// start and end at any time. Waits for events only, never for an answer. Main thread; needs the application object.
class TrayHost final : public QObject, public QAbstractNativeEventFilter
{
    Q_OBJECT

public:
    explicit TrayHost(QObject* parent = nullptr);
    Q_DISABLE_COPY(TrayHost)
    ~TrayHost() override;

    /// A host of StatusNotifierItems.
    [[nodiscard]] bool hasNotifierHost() const { return m_hasNotifierHost; }
    /// An X11 system tray.
    [[nodiscard]] bool hasX11Tray() const { return m_x11Tray != 0; }

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

Q_SIGNALS:
    /// One of the two has started or ended.
    void changed();

private:
    struct X11;

    void watchBus();
    // Bus signals are connected by name.
    Q_INVOKABLE void askForNotifierHost();
    void takeAnswer(QDBusPendingCallWatcher* call);
    void setNotifierHost(bool isThere);

    void watchX11();
    void findX11Tray();

    bool m_hasNotifierHost = false;
    std::unique_ptr<X11> m_x11;  // null when windows are not X11's
    std::uint32_t m_x11Tray = 0; // the tray's window
};
