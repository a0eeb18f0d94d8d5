// The client that the whole process shares.
#include "card/client/LVitAccess.h"
#include "support/MXLog.h"

namespace {

/// Shared by threads under its mutex.
struct SharedCommand
{
    std::mutex mutex;
    ServiceCommand command;
};

SharedCommand& defaultCommand()
{
    static SharedCommand shared;
    return shared;
}

} // namespace

void LVitAccess::setDefaultCommand(const ServiceCommand& command)
{
    const std::scoped_lock lock(defaultCommand().mutex);
    defaultCommand().command = command;
}

std::shared_ptr<LVitAccess> LVitAccess::defaultInstance()
{
    // The channel is stopped at the end of the process even if the client is still in use: handlers must not run while
    // static objects are destroyed. The logger is made first, so it is destroyed last.
    struct DefaultClient
    {
        DefaultClient()
        {
            [[maybe_unused]] const MXLog& logger = MXLog::defaultLogger();
            const std::scoped_lock lock(defaultCommand().mutex);
            client = std::make_shared<LVitAccess>(defaultCommand().command);
        }
        DefaultClient(const DefaultClient&) = delete;
        DefaultClient& operator=(const DefaultClient&) = delete;
        ~DefaultClient() { client->m_channel.stop(); }

        std::shared_ptr<LVitAccess> client;
    };
    static const DefaultClient holder;
    return holder.client;
}
