#pragma once

#include "service/embedded/CardFileList.h"
#include "service/embedded/CardFiles.h"

#include <variant>

/// Why a card was not read: the way to it, or its content.
using CardFailure = std::variant<CardFault, CardGap>;

/// One read of the card at the end of a channel, by the first of the maps that is the card's.
class CardReading
{
public:
    /// All are used as long as this lives.
    CardReading(CardChannel& channel, const std::vector<CardMap>& maps);

    /// The card's XML document. The card is the same one from the first command to the last, or there is none.
    [[nodiscard]] std::expected<QString, CardFailure> readDocument();

private:
    [[nodiscard]] std::expected<const CardMap*, CardFault> findMap();
    [[nodiscard]] std::expected<QString, CardFailure> readAlong(const CardMap& map);
    [[nodiscard]] std::expected<void, CardFailure> readFiles(const CardMap& map, CardContent& content);
    [[nodiscard]] std::expected<void, CardFailure> readListed(const std::vector<CardFileToRead>& files,
                                                              CardContent& content);
    [[nodiscard]] std::expected<bool, CardFault> isSameCard(const CardMap& map, const CardContent& content);
    [[nodiscard]] std::expected<QByteArray, CardFault> readFile(const CardFileId& id);

    CardChannel* m_channel;
    CardFiles m_files;
    const std::vector<CardMap>* m_maps;
};
