#pragma once

#include <QString>

/// Versions of a reading library and of the tables that it comes with, as texts for people.
struct LibraryVersions
{
    QString library;
    QString cardTable;
    QString destinationTable;
    QString authorisationTable;
};

/// The document that a reading library describes itself with.
[[nodiscard]] QString informationsDocument(const LibraryVersions& versions);
