#include "platform/MainQueue.h"

#include <QCoreApplication>

#include <mutex>
#include <utility>

namespace {

// The mutex keeps the main thread from destroying the application object while another thread posts to it.
struct QueueState
{
    std::mutex mutex;
    bool isWatched = false;
    bool isClosed = false;
};

QueueState& queueState()
{
    static QueueState state;
    return state;
}

// Called at the start of the application object's destructor.
void closeQueue()
{
    QueueState& state = queueState();
    const std::scoped_lock lock(state.mutex);
    state.isClosed = true;
}

} // namespace

void postToMainQueue(std::function<void()> task)
{
    QueueState& state = queueState();
    const std::scoped_lock lock(state.mutex);
    QCoreApplication* application = QCoreApplication::instance();
    if (application == nullptr || state.isClosed)
        return;
    if (!std::exchange(state.isWatched, true))
        qAddPostRoutine(closeQueue);
    QMetaObject::invokeMethod(application, std::move(task), Qt::QueuedConnection);
}
