#include "service/pcsc/PcscCard.h"

#include <array>
#include <type_traits>

#include <string.h>
#include <winscard.h>

static_assert(std::is_same_v<SCARDHANDLE, long> && std::is_same_v<DWORD, unsigned long>);

std::expected<std::unique_ptr<PcscCard>, CardFault> PcscCard::connect(const PcscContext& context,
                                                                      const QByteArray& reader)
{
    SCARDHANDLE handle = 0;
    DWORD protocol = SCARD_PROTOCOL_UNDEFINED;
    LONG code = ::SCardConnect(context.handle(), reader.constData(), SCARD_SHARE_SHARED,
                               SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1, &handle, &protocol);
    if (code != SCARD_S_SUCCESS)
        return std::unexpected(cardFault(code));
    std::unique_ptr<PcscCard> card(new PcscCard(handle, protocol));
    code = ::SCardBeginTransaction(handle);
    if (code != SCARD_S_SUCCESS)
        return std::unexpected(cardFault(code));
    card->m_isOurs = true;
    return card;
}

PcscCard::PcscCard(long handle, unsigned long protocol)
    : m_handle(handle)
    , m_protocol(protocol)
{
}

PcscCard::~PcscCard()
{
    if (m_isOurs)
        ::SCardEndTransaction(m_handle, SCARD_LEAVE_CARD);
    ::SCardDisconnect(m_handle, SCARD_LEAVE_CARD);
}

std::expected<QByteArray, CardFault> PcscCard::transmit(QByteArrayView command)
{
    const SCARD_IO_REQUEST* protocol = m_protocol == SCARD_PROTOCOL_T1 ? SCARD_PCI_T1 : SCARD_PCI_T0;
    std::array<unsigned char, MAX_BUFFER_SIZE> answer{};
    DWORD size = answer.size();
    const LONG code = ::SCardTransmit(m_handle, protocol, reinterpret_cast<const unsigned char*>(command.data()),
                                      static_cast<DWORD>(command.size()), nullptr, answer.data(), &size);
    if (code != SCARD_S_SUCCESS)
        return std::unexpected(cardFault(code));
    // Drivers report a removed card as an empty answer.
    if (size == 0)
        return std::unexpected(CardFault::CardGone);
    QByteArray bytes(reinterpret_cast<const char*>(answer.data()), static_cast<qsizetype>(size));
    ::explicit_bzero(answer.data(), answer.size());
    return bytes;
}
