// Makes a document of a card's files by a map: the result is a document that the application understands, or a gap with
// an explanation. The first byte chooses the map; after 2, the map follows, up to a null byte. Then follow the map's
// files, each as two bytes of length and its content; the highest length means a refusal.
#include "card/CardParser.h"
#include "service/CardCoverage.h"
#include "service/embedded/CardDocument.h"
#include "service/embedded/CardFileList.h"

#include <QFile>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr std::size_t refusal = 0xFFFF;

std::expected<CardMap, QString> shippedMap(const char* path)
{
    QFile file(QString::fromUtf8(path));
    return file.open(QIODevice::ReadOnly) ? parseCardMap(file.readAll()) : std::unexpected(file.errorString());
}

/// Takes bytes from the front; fewer when there are not enough.
class Input
{
public:
    explicit Input(QByteArrayView bytes)
        : m_rest(bytes)
    {
    }

    QByteArray take(qsizetype count)
    {
        const QByteArray bytes = m_rest.first(std::min(count, m_rest.size())).toByteArray();
        m_rest = m_rest.sliced(bytes.size());
        return bytes;
    }

    QByteArray takeText()
    {
        const qsizetype end = m_rest.indexOf('\0');
        return end < 0 ? take(m_rest.size()) : take(end + 1).chopped(1);
    }

    std::size_t takeLength()
    {
        std::size_t length = 0;
        for (const char byte : take(2))
            length = length << 8U | static_cast<std::uint8_t>(byte);
        return length;
    }

private:
    QByteArrayView m_rest;
};

std::expected<CardMap, QString> takeMap(Input& input)
{
    static const std::expected<CardMap, QString> specimen =
        shippedMap(PELMORA_SOURCE "/resources/card/maps/specimen.json");
    static const std::expected<CardMap, QString> vitale2 =
        shippedMap(PELMORA_SOURCE "/resources/card/maps/vitale2.json");
    if (!specimen || !vitale2)
        std::abort();
    const QByteArray choice = input.take(1);
    if (choice == QByteArray(1, '\2'))
        return parseCardMap(input.takeText());
    return choice == QByteArray(1, '\1') ? vitale2 : specimen;
}

void takeFiles(const std::vector<CardFileToRead>& files, Input& input, CardContent& content)
{
    for (const CardFileToRead& file : files) {
        const std::size_t length = input.takeLength();
        if (length != refusal)
            content.emplace(file.id, input.take(static_cast<qsizetype>(length)));
    }
}

/// Whether the application parses it as a card, with or without beneficiaries.
bool isCard(const QString& text)
{
    const std::expected<XmlDocument, Error> document = XmlDocument::fromText(text);
    return document && cardCoverage(text) && document->documentNode().firstNode("T_AsnDonneesVitale");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(QByteArrayView(data, static_cast<qsizetype>(size)));
    const std::expected<CardMap, QString> map = takeMap(input);
    if (!map) {
        if (map.error().isEmpty())
            std::abort();
        return 0;
    }
    CardContent content;
    takeFiles(firstCardFiles(*map), input, content);
    if (const auto others = otherCardFiles(*map, content))
        takeFiles(*others, input, content);
    const std::expected<QString, CardGap> document = cardDocument(*map, content);
    if (document ? !isCard(*document) : document.error().explanation.isEmpty())
        std::abort();
    if (!document && (document.error().kind == CardGap::Kind::Missing) == document.error().missing.isEmpty())
        std::abort();
    return 0;
}
