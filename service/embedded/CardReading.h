#pragma once

#include "service/embedded/CardFileList.h"
#include "service/embedded/CardFiles.h"

#include <variant>

/// Why a card was not read: the way to it, or its content.
using CardFailure = std::variant<CardFault, CardGap>;

/// One read of the card at the end of a channel, by the first of the maps that is the card's. All files are read twice:
/// what two readings do not agree on is not used.
class CardReading
{
public:
    /// All are used as long as this lives.
    CardReading(CardChannel& channel, const std::vector<CardMap>& maps);

    /// The card's XML document. The card is the same one from the first command to the last, or there is none.
    [[nodiscard]] std::expected<QString, CardFailure> readDocument();

private:
    using Result = std::expected<void, CardFailure>;
    using Bytes = std::expected<QByteArray, CardFault>;

    /// Whether the card at the end is the one that was read.
    enum class Identity
    {
        Same,
        Other,
        Unclear // it gives a file now that it refused before, or the reverse
    };

    [[nodiscard]] std::expected<const CardMap*, CardFault> findMap();
    [[nodiscard]] std::expected<QString, CardFailure> readAlong(const CardMap& map);
    [[nodiscard]] Result readFiles(const CardMap& map, CardContent& content);
    [[nodiscard]] Result readListed(const std::vector<CardFileToRead>& files, CardContent& content);
    [[nodiscard]] Result readAgain(const CardMap& map, const CardContent& content);
    [[nodiscard]] Result compare(const CardFileToRead& file, const CardContent& content);
    [[nodiscard]] Result confirmIdentity(const CardMap& map, const CardContent& content);
    [[nodiscard]] std::expected<Identity, CardFault> identityNow(const CardMap& map, const CardContent& content);
    [[nodiscard]] Bytes readFile(const CardFileId& id);

    CardChannel* m_channel;
    CardFiles m_files;
    const std::vector<CardMap>* m_maps;
};
