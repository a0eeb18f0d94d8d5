#include "platform/MainQueue.h"

#include <QCoreApplication>

#include <utility>

void postToMainQueue(std::function<void()> task)
{
    QCoreApplication* application = QCoreApplication::instance();
    if (application != nullptr)
        QMetaObject::invokeMethod(application, std::move(task), Qt::QueuedConnection);
}
