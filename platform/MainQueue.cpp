#include "platform/MainQueue.h"

#include <QCoreApplication>

#include <mutex>
#include <utility>

namespace {

// Guards the posting of a task against the end of the application object, which may come meanwhile on the main thread.
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

// The application object's first step when it is destroyed.
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
