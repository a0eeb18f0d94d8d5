#include "service/pcsc/PcscReaders.h"

#include "service/PcscBroker.h"
#include "service/pcsc/CardReaderWatch.h"
#include "service/pcsc/PcscCard.h"
#include "service/pcsc/PcscEvents.h"

#include <thread>

template <typename Work>
auto PcscReaders::withContext(Work work) -> decltype(work(std::declval<const PcscContext&>()))
{
    for (;;) {
        const bool isFresh = !m_context;
        if (isFresh) {
            std::expected<PcscContext, CardFault> context = PcscContext::establish();
            if (!context)
                return std::unexpected(context.error());
            m_context.emplace(*std::move(context));
        }
        auto result = work(*m_context);
        if (result || result.error() != CardFault::ServiceLost)
            return result;
        m_context.reset();
        if (isFresh)
            return result;
    }
}

std::expected<QList<QByteArray>, CardFault> PcscReaders::names()
{
    return withContext([](const PcscContext& context) { return context.readers(); });
}

std::expected<std::unique_ptr<CardTransport>, CardFault> PcscReaders::connect(const QByteArray& reader)
{
    using Connected = std::expected<std::unique_ptr<CardTransport>, CardFault>;
    return withContext([&reader](const PcscContext& context) { return Connected(PcscCard::connect(context, reader)); });
}

void PcscReaders::waitForCard(const QByteArray& reader, bool present, std::chrono::milliseconds longest)
{
    // The next attempt to connect shows the result.
    [[maybe_unused]] const auto hasCome = withContext([&reader, present, longest](const PcscContext& context) {
        return context.waitForCard(reader, present, longest);
    });
}

std::unique_ptr<ReaderWatch> PcscReaders::watch(const ReaderReport& report)
{
    return std::make_unique<CardReaderWatch>(std::make_unique<PcscEvents>(pcscSocketPath()), report);
}

void PcscReaders::pause(std::chrono::milliseconds time)
{
    std::this_thread::sleep_for(time);
}
