#pragma once

#include "service/embedded/CardFileList.h"
#include "service/embedded/CardFiles.h"

#include <variant>

/// Why a card was not read: a fault of the connection, or the content.
using CardFailure = std::variant<CardFault, CardGap>;

/// Reads the card in a channel by the first map that matches. All files are read twice; data that differ are refused.
class CardReading
{
public:
    /// Both must outlive it.
    CardReading(CardChannel& channel, const std::vector<CardMap>& maps);

    /// The card's XML document. An error when the card was exchanged during the read.
    [[nodiscard]] std::expected<QString, CardFailure> readDocument();

private:
    using Result = std::expected<void, CardFailure>;
    using Bytes = std::expected<QByteArray, CardFault>;

    /// Whether the card at the end is the same one.
    enum class Identity
    {
        Same,
        Other,
        Unclear // a file was refused only once
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
