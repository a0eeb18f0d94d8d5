#pragma once

#include "card/CardRecord.h"

#include <QString>

#include <expected>

class PageFonts;
class SchemeLogos;

/// The attestations of one folder: each record becomes one PDF file there, named after its insured person. Main thread.
class AttestationFiles
{
public:
    /// The logos and the fonts must outlive it.
    AttestationFiles(QString folder, SchemeLogos& logos, const PageFonts& fonts);

    /// Saves the record's attestation, over an older one of the same name, and gives its path. The folder is made when
    /// it is missing. The failure is a sentence for people.
    [[nodiscard]] std::expected<QString, QString> save(const CardRecord& record) const;

    /// "LastName FirstName.pdf", made a valid file name.
    [[nodiscard]] static QString fileName(const CardRecord& record);

private:
    QString m_folder;
    SchemeLogos& m_logos;
    const PageFonts& m_fonts;
};
