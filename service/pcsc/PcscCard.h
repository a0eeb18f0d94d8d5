#pragma once

#include "service/pcsc/CardTransport.h"
#include "service/pcsc/PcscContext.h"

#include <memory>

/// Exclusive use of a card in a reader. The card stays powered afterwards.
class PcscCard final : public CardTransport
{
public:
    /// Connects in shared mode and waits for the transaction. The context must outlive the card.
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
    bool m_isOurs = false; // inside a transaction
};
