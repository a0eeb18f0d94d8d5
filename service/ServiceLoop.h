#pragma once

#include "card/wire/ServiceMessage.h"
#include "platform/FileDescriptor.h"
#include "service/ServiceCommands.h"

/// The service at work: takes requests from one descriptor, writes each answer to the other, in order, and blocks
/// meanwhile.
class ServiceLoop
{
public:
    /// What came of the channel.
    enum class End
    {
        Closed,    // the application has left, which is how the service is told to leave
        Malformed, // what came in cannot be read any further
        Failed,    // the system refused to read or to write
        BeyondUse  // the reading library left a call behind, which a thread of this process still waits for
    };

    ServiceLoop(ServiceCommands commands, FileDescriptor requests, FileDescriptor replies);

    /// Answers until the channel ends. Needs SIGPIPE ignored, so that a lost reader is an answer like another.
    [[nodiscard]] End run();

private:
    std::optional<End> answerRequests();
    std::optional<End> write(QByteArrayView bytes);

    ServiceCommands m_commands;
    FileDescriptor m_requests;
    FileDescriptor m_replies;
    ServiceMessageReader m_reader;
};
