#pragma once

#include "attestation/page/PrintInfo.h"
#include "platform/Error.h"

#include <QString>

#include <optional>

/// What a dialog knows that asks how to print. It reports by a signal of its own that the user wants to print, and is
/// then told to accept, or what went wrong.
class PrintQuestion
{
public:
    PrintQuestion() = default;
    PrintQuestion(const PrintQuestion&) = delete;
    PrintQuestion& operator=(const PrintQuestion&) = delete;
    virtual ~PrintQuestion() = default;

    /// The chosen queue and its settings, or the file's sheet.
    [[nodiscard]] virtual PrintInfo info() const = 0;
    /// The file as it stands in its field; nullopt when a queue is chosen.
    [[nodiscard]] virtual std::optional<QString> file() const = 0;

    /// Accepts what was chosen, and closes.
    virtual void acceptNow() = 0;
    /// Tells over the dialog what went wrong.
    virtual void presentError(const Error& error) = 0;
};
