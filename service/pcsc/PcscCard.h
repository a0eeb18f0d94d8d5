#pragma once

#include "service/pcsc/CardTransport.h"
#include "service/pcsc/PcscContext.h"

#include <memory>

/// A card in a reader, for nobody else as long as this lives. The card stays powered afterwards.
class PcscCard final : public CardTransport
{
public:
    /// Connects, sharing the reader with whoever is connected already, and waits for its turn. The context outlives the
    /// card.
    [[nodiscard]] static std::expected<std::unique_ptr<PcscCard>, CardFault> connect(const PcscContext& context,
                                                                                     const QByteArray& reader);
    PcscCard(const PcscCard&) = delete;
    PcscCard& operator=(const PcscCard&) = delete;
    ~PcscCard() override;

    [[nodiscard]] std::expected<QByteArray, CardFault> transmit(QByteArrayView command) override;

private:
    PcscCard(long handle, unsigned long protocol);

    long m_handle;
    unsigned long m_protocol;
    bool m_isOurs = false; // in a transaction
};
