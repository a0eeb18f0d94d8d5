#pragma once

#include "service/pcsc/CardReaders.h"
#include "service/pcsc/PcscContext.h"

#include <optional>

/// The readers behind the system's PC/SC service. A connection to it is made when it is needed, kept, which keeps a
/// service that is started on demand from leaving, and made anew after the service has been.
class PcscReaders final : public CardReaders
{
public:
    [[nodiscard]] std::expected<QList<QByteArray>, CardFault> names() override;
    [[nodiscard]] std::expected<std::unique_ptr<CardTransport>, CardFault> connect(const QByteArray& reader) override;
    void waitForCard(const QByteArray& reader, bool present, std::chrono::milliseconds longest) override;
    void pause(std::chrono::milliseconds time) override;

private:
    /// Does something with a connection; once more, with a fresh one, when the kept one turns out to be void.
    template <typename Work>
    auto withContext(Work work) -> decltype(work(std::declval<const PcscContext&>()));

    std::optional<PcscContext> m_context;
};
