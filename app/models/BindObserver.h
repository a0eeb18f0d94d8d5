#pragma once

#include "platform/Error.h"

#include <functional>
#include <optional>

/// Observes the binds of the card service, from wherever they come, until its end. Main thread only.
class BindObserver
{
public:
    /// Called after each bind: once it is bound; when it failed, with the error if the notification has one.
    BindObserver(std::function<void()> bound, std::function<void(const std::optional<Error>&)> failed);
    BindObserver(const BindObserver&) = delete;
    BindObserver& operator=(const BindObserver&) = delete;
    ~BindObserver();
};
