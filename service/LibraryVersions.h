#pragma once

#include <QString>

/// Versions of a reading library and of its tables, for users.
struct LibraryVersions
{
    QString library;
    QString cardTable;
    QString destinationTable;
    QString authorisationTable;
};

/// The XML document with these versions.
[[nodiscard]] QString informationsDocument(const LibraryVersions& versions);
