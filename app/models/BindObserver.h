#pragma once

#include "platform/Error.h"

#include <functional>
#include <optional>

/// Observes all binds of the card service. Main thread only.
class BindObserver
{
public:
    /// Called after each bind: on success, or on failure with the notification's error, if any.
    BindObserver(std::function<void()> bound, std::function<void(const std::optional<Error>&)> failed);
    BindObserver(const BindObserver&) = delete;
    BindObserver& operator=(const BindObserver&) = delete;
    ~BindObserver();
};
