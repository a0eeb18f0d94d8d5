#include "platform/MainQueue.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>

#include <thread>

class tst_MainQueue : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void tasksRunLaterOnTheMainThreadInTheOrderOfTheCalls()
    {
        QList<int> order;
        QList<QThread*> threads;
        std::thread poster([&order, &threads] {
            for (int number = 0; number < 3; ++number) {
                postToMainQueue([number, &order, &threads] {
                    order.append(number);
                    threads.append(QThread::currentThread());
                });
            }
        });
        poster.join();
        QVERIFY(order.isEmpty());
        QTRY_COMPARE(order, (QList<int>{0, 1, 2}));
        QCOMPARE(threads, QList<QThread*>(3, QCoreApplication::instance()->thread()));
    }

    void aTaskPostedFromTheMainThreadRunsLater()
    {
        bool ran = false;
        postToMainQueue([&ran] { ran = true; });
        QVERIFY(!ran);
        QTRY_VERIFY(ran);
    }
};

template class RunnableTests<tst_MainQueue, QCoreApplication>;
#include "tst_mainqueue.moc"
