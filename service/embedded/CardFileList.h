#pragma once

#include "service/embedded/CardMap.h"
#include "service/embedded/PointersFile.h"

/// A file that is to be read, and whether the card is of no use when it refuses it.
struct CardFileToRead
{
    CardFileId id;
    bool required = true;
    QString name; // the map's, for the log; empty for one that only the pointers file names

    friend bool operator==(const CardFileToRead&, const CardFileToRead&) = default;
};

/// The files to read before anything is known of the card: those of the identity, then the pointers file; each once.
[[nodiscard]] std::vector<CardFileToRead> firstCardFiles(const CardMap& map);

/// The files to read once the first ones were: all others of the map, each once, those of an application together. The
/// error is a damaged pointers file, or one that does not name a required file.
[[nodiscard]] std::expected<std::vector<CardFileToRead>, CardGap> otherCardFiles(const CardMap& map,
                                                                                 const CardContent& content);

/// The files that the card's pointers file names; none for a map without one. The error is a damaged pointers file.
[[nodiscard]] std::expected<std::vector<PointedFile>, CardGap> pointedCardFiles(const CardMap& map,
                                                                                const CardContent& content);

/// Where a file of the map is on this card; nothing when the pointers file does not name it.
[[nodiscard]] std::optional<CardFileId> cardFileId(const CardFile& file, const std::vector<PointedFile>& pointed);

/// A file's identifier as the log shows it: four hexadecimal digits.
[[nodiscard]] QString cardFileNumber(const CardFileId& id);
