#include "platform/files/FileWorker.h"

#include "platform/MainQueue.h"

#include <QPointer>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

// Shared by both threads, under the mutex.
struct FileWorker::Shared
{
    std::mutex mutex;
    std::condition_variable idle;
    std::deque<std::function<void()>> queue;
    bool isRunning = false;
};

FileWorker::FileWorker(std::chrono::milliseconds patience)
    : m_patience(patience)
    , m_shared(std::make_shared<Shared>())
{
}

FileWorker::~FileWorker()
{
    if (!m_thread.joinable())
        return;
    std::unique_lock lock(m_shared->mutex);
    const bool isIdle = m_shared->idle.wait_for(lock, m_patience, [this] { return !m_shared->isRunning; });
    lock.unlock();
    if (isIdle)
        m_thread.join();
    else
        m_thread.detach();
}

FileWorker& FileWorker::shared()
{
    static FileWorker worker;
    return worker;
}

void FileWorker::start(QObject* asker, Work work)
{
    ++m_pending;
    auto step = [self = QPointer(this), asker = QPointer(asker), work = std::move(work)] {
        postToMainQueue([self, asker, afterwards = work()] {
            if (self)
                self->finish(asker, afterwards);
        });
    };
    const std::scoped_lock lock(m_shared->mutex);
    m_shared->queue.emplace_back(std::move(step));
    if (std::exchange(m_shared->isRunning, true))
        return;
    // The previous thread is about to end.
    if (m_thread.joinable())
        m_thread.join();
    m_thread = std::thread(&FileWorker::work, m_shared);
}

void FileWorker::work(const std::shared_ptr<Shared>& shared)
{
    std::unique_lock lock(shared->mutex);
    while (!shared->queue.empty()) {
        const std::function<void()> step = std::move(shared->queue.front());
        shared->queue.pop_front();
        lock.unlock();
        step();
        lock.lock();
    }
    shared->isRunning = false;
    shared->idle.notify_all();
}

void FileWorker::finish(QObject* asker, const std::function<void()>& afterwards)
{
    --m_pending;
    if (asker)
        afterwards();
    if (m_pending == 0)
        Q_EMIT ended();
}
