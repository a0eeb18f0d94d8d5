// Reads a card with arbitrary answers: the result is a document that the application understands, or a failure, and the
// read always ends. Each answer is two bytes of length and its content; after the last one the card is removed.
#include "card/CardParser.h"
#include "service/embedded/CardReading.h"
#include "service/embedded/SiteMaps.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

class FuzzedCard final : public CardTransport
{
public:
    explicit FuzzedCard(QByteArrayView answers)
        : m_answers(answers)
    {
    }

    std::expected<QByteArray, CardFault> transmit(QByteArrayView command) override
    {
        // A short command: the header, then data with their length, or the expected length.
        if (command.size() < 5 || command.size() > 261)
            std::abort();
        if (m_answers.size() < 2)
            return std::unexpected(CardFault::CardGone);
        const auto size = static_cast<std::uint8_t>(m_answers[0]) << 8 | static_cast<std::uint8_t>(m_answers[1]);
        const QByteArrayView answer = m_answers.sliced(2).first(std::min<qsizetype>(size, m_answers.size() - 2));
        m_answers = m_answers.sliced(2 + answer.size());
        return answer.toByteArray();
    }

private:
    QByteArrayView m_answers;
};

const std::vector<CardMap>& maps()
{
    static const std::vector<CardMap> maps = loadCardMaps(QStringLiteral(PELMORA_SOURCE "/resources/card")).maps;
    return maps;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedCard card(QByteArrayView(data, static_cast<qsizetype>(size)));
    CardChannel channel(card);
    const std::expected<QString, CardFailure> text = CardReading(channel, maps()).readDocument();
    if (!text)
        return 0;
    const std::expected<XmlDocument, Error> document = XmlDocument::fromText(*text);
    if (!document || !document->documentNode().firstNode("T_AsnDonneesVitale"))
        std::abort();
    return 0;
}
