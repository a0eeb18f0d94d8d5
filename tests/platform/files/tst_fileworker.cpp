#include "platform/files/FileWorker.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

#include <atomic>
#include <future>
#include <memory>
#include <numeric>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

FileWorker::Work nothing()
{
    return [] { return [] {}; };
}

} // namespace

class tst_FileWorker : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void workRunsOnAnotherThreadAndItsOutcomeOnTheMainThread()
    {
        FileWorker worker;
        std::thread::id workedOn;
        std::thread::id toldOn;
        worker.start(this, [&] {
            workedOn = std::this_thread::get_id();
            return [&toldOn] { toldOn = std::this_thread::get_id(); };
        });
        QVERIFY(worker.isBusy());
        QTRY_VERIFY(!worker.isBusy());
        QCOMPARE(toldOn, std::this_thread::get_id());
        QVERIFY(workedOn != toldOn);
    }

    void theMainThreadIsNotBlocked()
    {
        FileWorker worker;
        std::promise<void> answer;
        worker.start(this, [disk = answer.get_future().share()] {
            disk.wait();
            return [] {};
        });
        bool isAlive = false;
        QMetaObject::invokeMethod(this, [&isAlive] { isAlive = true; }, Qt::QueuedConnection);
        QTRY_VERIFY(isAlive);
        QVERIFY(worker.isBusy());
        answer.set_value();
        QTRY_VERIFY(!worker.isBusy());
    }

    void workIsDoneInItsOrder()
    {
        FileWorker worker;
        const QSignalSpy ended(&worker, &FileWorker::ended);
        QList<int> done;
        QList<int> told;
        for (int number = 0; number < 50; ++number) {
            worker.start(this, [&done, &told, number] {
                done.append(number);
                return [&told, number] { told.append(number); };
            });
        }
        QTRY_VERIFY(!worker.isBusy());
        QList<int> expected(50);
        std::iota(expected.begin(), expected.end(), 0);
        QCOMPARE(done, expected);
        QCOMPARE(told, expected);
        QCOMPARE(ended.count(), 1);
    }

    void workStartedAfterAPauseIsDone()
    {
        FileWorker worker;
        const QSignalSpy ended(&worker, &FileWorker::ended);
        for (int round = 1; round <= 100; ++round) {
            worker.start(this, nothing());
            QTRY_COMPARE(ended.count(), round);
        }
    }

    void aDeletedReceiverGetsNoOutcome()
    {
        FileWorker worker;
        const QSignalSpy ended(&worker, &FileWorker::ended);
        auto asker = std::make_unique<QObject>();
        std::atomic<bool> isDone = false;
        bool isTold = false;
        worker.start(asker.get(), [&isDone, &isTold] {
            isDone = true;
            return [&isTold] { isTold = true; };
        });
        asker.reset();
        QTRY_COMPARE(ended.count(), 1);
        QVERIFY(isDone);
        QVERIFY(!isTold);
    }

    void destructionWaitsForStartedWork()
    {
        std::atomic<int> done = 0;
        {
            FileWorker worker;
            for (int number = 0; number < 3; ++number) {
                worker.start(this, [&done] {
                    ++done;
                    return [] {};
                });
            }
        }
        QCOMPARE(done.load(), 3);
    }

    void destructionDoesNotWaitForWorkThatNeverEnds()
    {
        std::promise<void> answer;
        auto isDone = std::make_shared<std::promise<void>>();
        {
            FileWorker worker(std::chrono::milliseconds(10));
            worker.start(this, [disk = answer.get_future().share(), isDone] {
                disk.wait();
                isDone->set_value();
                return [] {};
            });
        }
        // The work continues without its receiver.
        std::future<void> end = isDone->get_future();
        QCOMPARE(end.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
        answer.set_value();
        QCOMPARE(end.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    }
};

template class RunnableTests<tst_FileWorker, QCoreApplication>;
#include "tst_fileworker.moc"
