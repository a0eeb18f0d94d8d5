#include "card/client/ServiceChannel.h"

#include "card/client/ChannelLoop.h"

#include <utility>

ServiceChannel::ServiceChannel(const ServiceCommand& command, ChannelLimits limits)
    : m_loop(std::make_shared<ChannelLoop>(command, limits))
    , m_thread([loop = m_loop] { loop->run(); })
{
}

ServiceChannel::~ServiceChannel()
{
    if (m_thread.get_id() == std::this_thread::get_id()) {
        m_loop->requestStop();
        m_thread.detach();
    } else {
        stop();
    }
}

void ServiceChannel::post(Task task)
{
    // The task may destroy this channel during the call.
    const std::shared_ptr<ChannelLoop> loop = m_loop;
    loop->post(std::move(task));
}

void ServiceChannel::stop()
{
    m_loop->requestStop();
    if (m_thread.joinable())
        m_thread.join();
}

bool ServiceChannel::isOpen() const
{
    return m_loop->isOpen();
}

std::expected<void, std::error_code> ServiceChannel::open(ChannelEventHandler eventHandler)
{
    return m_loop->open(std::move(eventHandler));
}

void ServiceChannel::close()
{
    m_loop->close();
}

void ServiceChannel::send(const QCborMap& body, ServiceReplyHandler handler)
{
    m_loop->send(body, std::move(handler));
}
