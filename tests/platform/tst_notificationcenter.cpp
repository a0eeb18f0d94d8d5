#include "platform/Error.h"
#include "platform/NotificationCenter.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_NotificationCenter : public TestCase
{
    Q_OBJECT

private:
    NotificationCenter m_center;
    QStringList m_heard;
    const int m_first = 1;
    const int m_second = 2;

    NotificationCenter::Block hear(const QString& who)
    {
        return [this, who](const Notification& notification) { m_heard.append(who + u' ' + notification.name); };
    }

private Q_SLOTS:
    void init()
    {
        m_center = NotificationCenter();
        m_heard.clear();
    }

    void observersOfTheNameAreCalledAtOnceInTheirOrder()
    {
        m_center.addObserver(&m_second, u"Bind"_s, hear(u"second"_s));
        m_center.addObserver(&m_first, u"Bind"_s, hear(u"first"_s));
        m_center.addObserver(&m_first, u"Other"_s, hear(u"other"_s));
        m_center.postNotification(u"Bind"_s);
        QCOMPARE(m_heard, (QStringList{u"second Bind"_s, u"first Bind"_s}));
    }

    void aNotificationWithoutObserversIsAccepted()
    {
        m_center.postNotification(u"Bind"_s);
        QVERIFY(m_heard.isEmpty());
    }

    void theUserInformationArrivesUnchanged()
    {
        std::vector<std::optional<QVariantMap>> heard;
        m_center.addObserver(&m_first, u"Bind"_s,
                             [&heard](const Notification& notification) { heard.push_back(notification.userInfo); });
        const QVariantMap information{{u"Status"_s, u"failure"_s}};
        m_center.postNotification(u"Bind"_s, information);
        m_center.postNotification(u"Bind"_s, QVariantMap());
        m_center.postNotification(u"Bind"_s);
        QCOMPARE(heard.size(), std::size_t{3});
        QCOMPARE(heard[0].value(), information);
        QCOMPARE(heard[1].value(), QVariantMap());
        QVERIFY(!heard[2].has_value());
    }

    void aRemovedObserverIsNotCalled()
    {
        m_center.addObserver(&m_first, u"Bind"_s, hear(u"first"_s));
        m_center.addObserver(&m_first, u"Other"_s, hear(u"first"_s));
        m_center.addObserver(&m_second, u"Bind"_s, hear(u"second"_s));
        m_center.removeObserver(&m_first);
        m_center.removeObserver(&m_first);
        m_center.postNotification(u"Bind"_s);
        m_center.postNotification(u"Other"_s);
        QCOMPARE(m_heard, QStringList{u"second Bind"_s});
    }

    void anObserverCanRemoveItselfAndOthersWhenCalled()
    {
        m_center.addObserver(&m_first, u"Bind"_s, [this](const Notification& notification) {
            hear(u"first"_s)(notification);
            m_center.removeObserver(&m_second);
            m_center.removeObserver(&m_first);
        });
        m_center.addObserver(&m_second, u"Bind"_s, hear(u"second"_s));
        m_center.postNotification(u"Bind"_s);
        m_center.postNotification(u"Bind"_s);
        QCOMPARE(m_heard, QStringList{u"first Bind"_s});
    }

    void anObserverAddedDuringANotificationIsCalledForTheNextOne()
    {
        m_center.addObserver(&m_first, u"Bind"_s, [this](const Notification&) {
            for (int count = 0; count < 100; ++count)
                m_center.addObserver(&m_second, u"Later"_s, hear(u"second"_s));
            m_center.addObserver(&m_second, u"Bind"_s, hear(u"second"_s));
        });
        m_center.postNotification(u"Bind"_s);
        QVERIFY(m_heard.isEmpty());
        m_center.removeObserver(&m_first);
        m_center.postNotification(u"Bind"_s);
        QCOMPARE(m_heard, QStringList{u"second Bind"_s});
    }

    void anObserverCanPostANotification()
    {
        m_center.addObserver(&m_first, u"Bind"_s,
                             [this](const Notification&) { m_center.postNotification(u"Other"_s); });
        m_center.addObserver(&m_second, u"Bind"_s, hear(u"second"_s));
        m_center.addObserver(&m_second, u"Other"_s, hear(u"second"_s));
        m_center.postNotification(u"Bind"_s);
        QCOMPARE(m_heard, (QStringList{u"second Other"_s, u"second Bind"_s}));
    }

    void userInformationCanContainAnError()
    {
        const Error error(u"Pelmora"_s, -20, u"Rien."_s);
        const std::optional<Error> found = errorInValue(QVariant::fromValue(error));
        QVERIFY(found.has_value());
        QCOMPARE(*found, error);
        QCOMPARE(found->localizedDescription(), u"Rien."_s);
        QVERIFY(!errorInValue(QVariant()).has_value());
        QVERIFY(!errorInValue(QVariant(u"Pelmora"_s)).has_value());
    }
};

template class RunnableTests<tst_NotificationCenter, void>;
#include "tst_notificationcenter.moc"
