#pragma once

#include <QString>

#include <chrono>
#include <expected>
#include <functional>

/// Runs a trial in a child process, which may crash or hang. The trial returns an empty text or the reason of its
/// failure. The error is that reason, or in French how the child ended: by a signal, by itself, or not in time. The
/// child is always reaped. Other threads of the caller must hold no lock that the trial needs.
[[nodiscard]] std::expected<void, QString> tryInChild(const std::function<QString()>& trial,
                                                      std::chrono::milliseconds patience);
