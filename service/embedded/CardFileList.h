#pragma once

#include "service/embedded/CardMap.h"
#include "service/embedded/PointersFile.h"

/// A file to read. Without a required file the card cannot be used.
struct CardFileToRead
{
    CardFileId id;
    bool required = true;
    QString name; // the map's, for the log; empty for a file that only the pointers file names

    friend bool operator==(const CardFileToRead&, const CardFileToRead&) = default;
};

/// The first files to read: those of the identity, then the pointers file, each once.
[[nodiscard]] std::vector<CardFileToRead> firstCardFiles(const CardMap& map);

/// The files to read after the first ones: all others of the map, each once, those of an application together. The
/// error is a damaged pointers file, or a required file that it does not name.
[[nodiscard]] std::expected<std::vector<CardFileToRead>, CardGap> otherCardFiles(const CardMap& map,
                                                                                 const CardContent& content);

/// The files named in the card's pointers file; none for a map without one. The error is a damaged pointers file.
[[nodiscard]] std::expected<std::vector<PointedFile>, CardGap> pointedCardFiles(const CardMap& map,
                                                                                const CardContent& content);

/// The place of a map's file on this card; absent when the pointers file does not name it.
[[nodiscard]] std::optional<CardFileId> cardFileId(const CardFile& file, const std::vector<PointedFile>& pointed);

/// A file's identifier for the log: four hexadecimal digits.
[[nodiscard]] QString cardFileNumber(const CardFileId& id);
