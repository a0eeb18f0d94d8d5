#include "app/desktop/SessionEvents.h"
#include "tests/app/desktop/PrivateBus.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString managerPath = u"/org/freedesktop/login1"_s;
const QString ownSession = u"/org/freedesktop/login1/session/_37"_s;
const QString otherSession = u"/org/freedesktop/login1/session/_38"_s;

} // namespace

/// A fake of the part of logind that SessionEvents uses.
class FakeLogind final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    explicit FakeLogind(QDBusConnection bus)
        : m_bus(std::move(bus))
    {
        m_isReady = m_bus.registerObject(managerPath, this, QDBusConnection::ExportScriptableInvokables) &&
                    m_bus.registerService(u"org.freedesktop.login1"_s);
    }
    Q_DISABLE_COPY_MOVE(FakeLogind)
    ~FakeLogind() override { m_bus.unregisterService(u"org.freedesktop.login1"_s); }

    [[nodiscard]] bool isReady() const { return m_isReady; }

    void lock(const QString& session)
    {
        m_bus.send(QDBusMessage::createSignal(session, u"org.freedesktop.login1.Session"_s, u"Lock"_s));
    }
    void prepareForSleep(bool isStarting)
    {
        QDBusMessage message =
            QDBusMessage::createSignal(managerPath, u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s);
        message << isStarting;
        m_bus.send(message);
    }

    // NOLINTNEXTLINE(readability-identifier-naming): the name of logind's interface
    Q_SCRIPTABLE QDBusObjectPath GetSession(const QString& name)
    {
        asked.append(name);
        return QDBusObjectPath(ownSession);
    }
    QStringList asked;

private:
    QDBusConnection m_bus;
    bool m_isReady = false;
};

class tst_SessionEvents : public TestCase
{
    Q_OBJECT

private:
    PrivateBus m_bus;

private Q_SLOTS:
    void theSignalsOfLogindAreEmittedAsEvents_data()
    {
        QTest::addColumn<QByteArray>("session");
        QTest::addColumn<QString>("asked");
        QTest::newRow("in a session") << QByteArray("7") << u"7"_s;
        QTest::newRow("as a service") << QByteArray() << u"auto"_s;
    }

    void theSignalsOfLogindAreEmittedAsEvents()
    {
        QFETCH(const QByteArray, session);
        QFETCH(const QString, asked);
        qputenv("XDG_SESSION_ID", session);
        FakeLogind logind(m_bus.connect(u"logind "_s + asked));
        QVERIFY(logind.isReady());
        const SessionEvents events(m_bus.connect(u"events "_s + asked));
        QSignalSpy locked(&events, &SessionEvents::locked);
        QSignalSpy asleep(&events, &SessionEvents::aboutToSleep);
        QSignalSpy resumed(&events, &SessionEvents::resumed);
        QTRY_COMPARE(logind.asked, QStringList{asked});
        // The session's path is known shortly after that answer.
        QTRY_VERIFY([&] {
            logind.lock(ownSession);
            return locked.wait(50);
        }());
        const qsizetype own = locked.size();
        logind.lock(otherSession);
        logind.prepareForSleep(true);
        QTRY_COMPARE(asleep.size(), 1);
        QCOMPARE(locked.size(), own);
        QCOMPARE(resumed.size(), 0);
        logind.prepareForSleep(false);
        QTRY_COMPARE(resumed.size(), 1);
        QCOMPARE(asleep.size(), 1);
    }

    void withoutABusThereAreNoEvents()
    {
        const SessionEvents events(QDBusConnection::connectToBus(u"unix:path=/absent/bus"_s, u"absent"_s));
        QVERIFY(events.children().isEmpty());
    }
};

template class RunnableTests<tst_SessionEvents, QCoreApplication>;
#include "tst_sessionevents.moc"
