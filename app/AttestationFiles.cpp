#include "app/AttestationFiles.h"

#include "attestation/AttestationPdf.h"
#include "attestation/MVNewAttestation.h"
#include "card/CardKeys.h"
#include "card/PelmoraError.h"
#include "platform/FileName.h"
#include "platform/ObjectText.h"
#include "platform/PrivateFile.h"
#include "support/MXUtils.h"

#include <utility>

using namespace Qt::StringLiterals;

QString SaveFailure::description() const
{
    switch (kind) {
    case Kind::FolderUnusable:
        return u"le dossier « %1 » ne peut pas être utilisé."_s.arg(path);
    case Kind::NoDocument:
        return PelmoraError::writeError().localizedDescription();
    case Kind::WriteFailed:
        break;
    }
    return u"« %1 » n’a pas été enregistré : %2."_s.arg(path, reason);
}

AttestationFiles::AttestationFiles(QString folder, SchemeLogos& logos, const PageFonts& fonts)
    : m_folder(std::move(folder))
    , m_logos(logos)
    , m_fonts(fonts)
{
}

std::expected<QString, SaveFailure> AttestationFiles::save(const CardRecord& record) const
{
    if (!MXUtils::checkFolderAtPath(m_folder, true))
        return std::unexpected(SaveFailure{SaveFailure::Kind::FolderUnusable, m_folder, {}});

    MVNewAttestation attestation(m_logos);
    attestation.setVitale(record);
    const QByteArray document = renderAttestationPdf(attestation.page(), m_fonts);
    if (document.isEmpty())
        return std::unexpected(SaveFailure{SaveFailure::Kind::NoDocument, m_folder, {}});

    QString path = m_folder + u'/' + fileName(record);
    if (const std::expected<void, QString> written = writePrivateFile(path, document); !written)
        return std::unexpected(SaveFailure{SaveFailure::Kind::WriteFailed, path, written.error()});
    return path;
}

QString AttestationFiles::fileName(const CardRecord& record)
{
    const QString name =
        objectText(record.text(CardKey::lastName)) + u' ' + objectText(record.text(CardKey::firstName));
    return fileNameFromText(name, u"pdf"_s);
}
