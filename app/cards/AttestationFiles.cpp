#include "app/cards/AttestationFiles.h"

#include "attestation/document/AttestationPdf.h"
#include "attestation/page/PageOfCard.h"
#include "card/CardKeys.h"
#include "platform/ObjectText.h"
#include "platform/files/FileName.h"
#include "platform/files/PrivateFile.h"
#include "support/MXUtils.h"

#include <utility>

using namespace Qt::StringLiterals;

AttestationFiles::AttestationFiles(QString folder, PageOptions options, SchemeLogos& logos, const PageFonts& fonts)
    : m_folder(std::move(folder))
    , m_options(options)
    , m_logos(logos)
    , m_fonts(fonts)
{
}

AttestationDocument AttestationFiles::document(const CardRecord& record) const
{
    return {m_folder, fileName(record), renderAttestationPdf(pageOfCard(record, m_options, m_logos), m_fonts)};
}

std::expected<QString, SaveFailure> AttestationFiles::write(const AttestationDocument& document)
{
    if (!MXUtils::checkFolderAtPath(document.folder, true))
        return std::unexpected(SaveFailure{SaveFailure::Kind::FolderUnusable, document.folder, {}, {}});
    QString path = document.folder + u'/' + document.fileName;
    if (!document.pdf) {
        return std::unexpected(
            SaveFailure{SaveFailure::Kind::NoDocument, path, {}, document.pdf.error().localizedDescription()});
    }
    if (const std::expected<void, WriteFailure> written = writePrivateFile(path, *document.pdf); !written)
        return std::unexpected(SaveFailure{SaveFailure::Kind::WriteFailed, path, written.error(), {}});
    return path;
}

std::expected<QString, SaveFailure> AttestationFiles::save(const CardRecord& record) const
{
    return write(document(record));
}

QString AttestationFiles::fileName(const CardRecord& record)
{
    const QString name =
        objectText(record.text(CardKey::lastName)) + u' ' + objectText(record.text(CardKey::firstName));
    return fileNameFromText(name, u"pdf"_s);
}
