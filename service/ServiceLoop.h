#pragma once

#include "card/wire/ServiceMessage.h"
#include "platform/FileDescriptor.h"
#include "service/ServiceCommands.h"

/// Reads requests from one descriptor and writes answers to the other, in order, and the reader's state in between.
/// Blocks.
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
    class Output;

    std::optional<End> answerRequests();

    std::shared_ptr<Output> m_output; // shared with the reader's watch, whose thread may outlive this object
    ServiceCommands m_commands;
    FileDescriptor m_requests;
    ServiceMessageReader m_reader;
};
