#pragma once

#include <functional>

/// Runs a task later on the main thread's event loop, in the order of the calls. Any thread. The task is dropped when
/// there is no application object.
void postToMainQueue(std::function<void()> task);
