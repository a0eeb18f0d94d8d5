#include "app/models/BindObserver.h"

#include "card/client/BindOutcome.h"
#include "card/client/CardServiceKeys.h"
#include "platform/NotificationCenter.h"

#include <utility>

BindObserver::BindObserver(std::function<void()> bound, std::function<void(const std::optional<Error>&)> failed)
{
    const auto observe = [bound = std::move(bound), failed = std::move(failed)](const Notification& notification) {
        if (!notification.userInfo)
            return;
        if (notification.userInfo->value(BindNotification::status.toString()) == BindNotification::success.toString())
            bound();
        else
            failed(bindError(*notification.userInfo));
    };
    NotificationCenter::defaultCenter().addObserver(this, BindNotification::name.toString(), observe);
}

BindObserver::~BindObserver()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}
