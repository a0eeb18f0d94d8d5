#include "app/desktop/DesktopNotification.h"
#include "tests/app/desktop/PrivateBus.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTest>

using namespace Qt::StringLiterals;

/// A server for notifications, which gives each new one the number 7.
class FakeNotifications final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    // The name and the parameters of the desktop's interface.
    // NOLINTNEXTLINE(readability-function-size, readability-identifier-naming)
    Q_SCRIPTABLE uint Notify(const QString& application, uint replaced, const QString& icon, const QString& title,
                             const QString& body, const QStringList& actions, const QVariantMap& hints, int time)
    {
        shown.append(u"%1|%2|%3|%4|%5|%6|%7|%8"_s.arg(application)
                         .arg(replaced)
                         .arg(icon, title, body)
                         .arg(actions.size())
                         .arg(hints.value(u"transient"_s).toBool())
                         .arg(time));
        return 7;
    }

    QStringList shown;
};

class tst_DesktopNotification : public TestCase
{
    Q_OBJECT

private:
    PrivateBus m_bus;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(!m_bus.address().isEmpty());
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toUtf8());
    }

    void withoutANotificationServerShowingReturnsSoon()
    {
        QElapsedTimer time;
        time.start();
        DesktopNotification notification;
        notification.show(u"Carte lue"_s);
        QVERIFY(time.elapsed() < 5000);
    }

    void aLaterNotificationReplacesTheEarlierOne()
    {
        FakeNotifications server;
        QDBusConnection bus = m_bus.connect(u"notifications"_s);
        QVERIFY(bus.registerObject(u"/org/freedesktop/Notifications"_s, &server,
                                   QDBusConnection::ExportScriptableInvokables));
        QVERIFY(bus.registerService(u"org.freedesktop.Notifications"_s));
        DesktopNotification notification;
        notification.show(u"Carte lue"_s);
        QTRY_COMPARE(server.shown.size(), 1);
        QCOMPARE(server.shown.constLast(), u"Pelmora|0|com.morvel.Pelmora|Carte lue||0|1|-1"_s);
        // The number is known only after the server's answer was processed.
        QTRY_VERIFY([&] {
            notification.show(u"Erreur"_s);
            return QTest::qWaitFor([&server] { return server.shown.constLast().startsWith(u"Pelmora|7|"); }, 100);
        }());
        QCOMPARE(server.shown.constLast(), u"Pelmora|7|com.morvel.Pelmora|Erreur||0|1|-1"_s);
        QDBusConnection::disconnectFromBus(u"notifications"_s);
    }
};

template class RunnableTests<tst_DesktopNotification, QCoreApplication>;
#include "tst_desktopnotification.moc"
