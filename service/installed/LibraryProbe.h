#pragma once

#include <QString>

#include <chrono>
#include <expected>
#include <functional>

/// Tries something in a process of its own, which may crash or hang. The trial gives an empty text, or the reason why
/// it failed. What comes back is that reason, or in French how the process ended: by a signal, by itself, or not in
/// time. Nothing of the process is left. The caller's other threads must hold no lock that the trial needs.
[[nodiscard]] std::expected<void, QString> tryInChild(const std::function<QString()>& trial,
                                                      std::chrono::milliseconds patience);
