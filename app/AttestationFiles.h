#pragma once

#include "card/CardRecord.h"

#include <QString>

#include <expected>

class PageFonts;
class SchemeLogos;

/// Why an attestation was not saved.
struct SaveFailure
{
    enum class Kind
    {
        FolderUnusable,
        NoDocument,
        WriteFailed
    };

    Kind kind;
    /// The folder or, when writing failed, the file.
    QString path;
    /// Why writing failed, for people; it says nothing about the patient.
    QString reason;

    /// The failure as a sentence for people.
    [[nodiscard]] QString description() const;
};

/// The attestations of one folder: each record becomes one PDF file there, named after its insured person. Main thread.
class AttestationFiles
{
public:
    /// The logos and the fonts must outlive it.
    AttestationFiles(QString folder, SchemeLogos& logos, const PageFonts& fonts);

    /// Saves the record's attestation, over an older one of the same name, and gives its path. The folder is made when
    /// it is missing.
    [[nodiscard]] std::expected<QString, SaveFailure> save(const CardRecord& record) const;

    /// "LastName FirstName.pdf", made a valid file name.
    [[nodiscard]] static QString fileName(const CardRecord& record);

private:
    QString m_folder;
    SchemeLogos& m_logos;
    const PageFonts& m_fonts;
};
