#pragma once

#include "service/embedded/CardContent.h"

#include <QByteArrayView>

#include <expected>
#include <vector>

/// A file named in the pointers file of a second-generation card.
struct PointedFile
{
    QByteArray name; // without padding
    CardFileId id;
};

/// The files in a pointers file, in its order. The error is in French.
[[nodiscard]] std::expected<std::vector<PointedFile>, QString> parsePointersFile(QByteArrayView bytes);
