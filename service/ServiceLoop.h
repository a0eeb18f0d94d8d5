#pragma once

#include "card/wire/ServiceMessage.h"
#include "platform/FileDescriptor.h"
#include "service/ServiceCommands.h"

/// Reads requests from one descriptor and writes answers to the other, in order. Blocks.
class ServiceLoop
{
public:
    /// Why the loop ended.
    enum class End
    {
        Closed,    // the application closed the channel
        Malformed, // malformed input
        Failed,    // reading or writing failed
        BeyondUse  // a call of the reading library was abandoned, and its thread still waits
    };

    ServiceLoop(ServiceCommands commands, FileDescriptor requests, FileDescriptor replies);

    /// Answers until the channel ends. SIGPIPE must be ignored.
    [[nodiscard]] End run();

private:
    std::optional<End> answerRequests();
    std::optional<End> write(QByteArrayView bytes);

    ServiceCommands m_commands;
    FileDescriptor m_requests;
    FileDescriptor m_replies;
    ServiceMessageReader m_reader;
};
