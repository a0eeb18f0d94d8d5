#pragma once

#include <functional>

/// Runs a task on the main thread's event loop, later, in the order of the calls. Callable from any thread; a task that
/// is posted when no application object exists any more is dropped.
void postToMainQueue(std::function<void()> task);
