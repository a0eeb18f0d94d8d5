#pragma once

#include "service/embedded/CardContent.h"

#include <QByteArrayView>

#include <expected>
#include <vector>

/// A file that a second-generation card names in its pointers file.
struct PointedFile
{
    QByteArray name; // without the blanks that fill it up
    CardFileId id;
};

/// The files that a pointers file names, in its order; or what is wrong with it, in French.
[[nodiscard]] std::expected<std::vector<PointedFile>, QString> parsePointersFile(QByteArrayView bytes);
