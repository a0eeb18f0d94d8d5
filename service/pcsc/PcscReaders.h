#pragma once

#include "service/pcsc/CardReaders.h"
#include "service/pcsc/PcscContext.h"

#include <optional>

/// The readers of the PC/SC service. The connection is made when it is first needed, kept (so that a service started on
/// demand does not exit), and replaced when the service was restarted.
class PcscReaders final : public CardReaders
{
public:
    [[nodiscard]] std::expected<QList<QByteArray>, CardFault> names() override;
    [[nodiscard]] std::expected<std::unique_ptr<CardTransport>, CardFault> connect(const QByteArray& reader) override;
    void waitForCard(const QByteArray& reader, bool present, std::chrono::milliseconds longest) override;
    [[nodiscard]] std::unique_ptr<ReaderWatch> watch(const ReaderReport& report) override;
    void pause(std::chrono::milliseconds time) override;

private:
    /// Runs the work with the connection, and again with a new one when the service was restarted.
    template <typename Work>
    auto withContext(Work work) -> decltype(work(std::declval<const PcscContext&>()));

    std::optional<PcscContext> m_context;
};
