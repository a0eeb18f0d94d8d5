#pragma once

#include "app/cards/SaveFailure.h"
#include "attestation/page/PageOptions.h"
#include "card/CardRecord.h"
#include "platform/Error.h"

#include <QByteArray>
#include <QString>

#include <expected>

class PageFonts;
class SchemeLogos;

/// An attestation that is ready to be written.
struct AttestationDocument
{
    QString folder;
    QString fileName;
    std::expected<QByteArray, Error> pdf;
};

/// The attestations of one folder: each record becomes one PDF file there, named after its insured person. Main thread.
class AttestationFiles
{
public:
    /// The logos and the fonts must outlive it.
    AttestationFiles(QString folder, PageOptions options, SchemeLogos& logos, const PageFonts& fonts);

    /// The record's attestation, not yet written.
    [[nodiscard]] AttestationDocument document(const CardRecord& record) const;
    /// Writes it, over an older one of the same name, and gives its path. The folder is made when it is missing.
    /// Callable from any thread; a slow disk makes it last.
    [[nodiscard]] static std::expected<QString, SaveFailure> write(const AttestationDocument& document);
    /// Both in one.
    [[nodiscard]] std::expected<QString, SaveFailure> save(const CardRecord& record) const;

    /// "LastName FirstName.pdf", made a valid file name.
    [[nodiscard]] static QString fileName(const CardRecord& record);

private:
    QString m_folder;
    PageOptions m_options;
    SchemeLogos& m_logos;
    const PageFonts& m_fonts;
};
