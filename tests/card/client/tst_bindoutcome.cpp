#include "card/PelmoraError.h"
#include "card/client/BindOutcome.h"
#include "platform/NotificationCenter.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_BindOutcome : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aSuccessfulBindHasNoError() { QVERIFY(bindOutcome(true, std::nullopt).has_value()); }

    void aFailureKeepsItsError()
    {
        QVERIFY(bindOutcome(false, PelmoraError::badReader()) == std::unexpected(PelmoraError::badReader()));
    }

    void aFailureWithoutAnErrorGivesTheGeneralError()
    {
        QVERIFY(bindOutcome(false, std::nullopt) == std::unexpected(PelmoraError::generalError()));
    }

    void theNotificationContainsTheOutcome()
    {
        QList<QVariantMap> heard;
        NotificationCenter::defaultCenter().addObserver(
            this, u"MVBindNotification"_s,
            [&heard](const Notification& notification) { heard.append(notification.userInfo.value()); });
        postBindNotification({});
        postBindNotification(std::unexpected(PelmoraError::noReader()));
        NotificationCenter::defaultCenter().removeObserver(this);

        QCOMPARE(heard.size(), 2);
        QCOMPARE(heard[0], (QVariantMap{{u"Status"_s, u"success"_s}}));
        QCOMPARE(heard[1].keys(), (QStringList{u"Error"_s, u"Status"_s}));
        QCOMPARE(heard[1].value(u"Status"_s), QVariant(u"failure"_s));
        QVERIFY(errorInValue(heard[1].value(u"Error"_s)) == PelmoraError::noReader());
    }

    void aBindThatANewerOneReplacedIsNotNotified()
    {
        const BindOutcome replaced = bindOutcome(false, replacedBindError());
        QVERIFY(isReplaced(replaced));
        QVERIFY(!isReplaced(bindOutcome(true, std::nullopt)));
        QVERIFY(!isReplaced(bindOutcome(false, std::nullopt)));

        int heard = 0;
        NotificationCenter::defaultCenter().addObserver(this, u"MVBindNotification"_s,
                                                        [&heard](const Notification&) { ++heard; });
        postBindNotification(replaced);
        NotificationCenter::defaultCenter().removeObserver(this);
        QCOMPARE(heard, 0);
    }
};

template class RunnableTests<tst_BindOutcome, void>;
#include "tst_bindoutcome.moc"
