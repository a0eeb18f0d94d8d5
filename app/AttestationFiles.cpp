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

AttestationFiles::AttestationFiles(QString folder, SchemeLogos& logos, const PageFonts& fonts)
    : m_folder(std::move(folder))
    , m_logos(logos)
    , m_fonts(fonts)
{
}

std::expected<QString, QString> AttestationFiles::save(const CardRecord& record) const
{
    if (!MXUtils::checkFolderAtPath(m_folder, true))
        return std::unexpected(u"le dossier « %1 » ne peut pas être utilisé."_s.arg(m_folder));

    MVNewAttestation attestation(m_logos);
    attestation.setVitale(record);
    const QByteArray document = renderAttestationPdf(attestation.page(), m_fonts);
    if (document.isEmpty())
        return std::unexpected(PelmoraError::writeError().localizedDescription());

    QString path = m_folder + u'/' + fileName(record);
    if (const std::expected<void, QString> written = writePrivateFile(path, document); !written)
        return std::unexpected(u"« %1 » n’a pas été enregistré : %2."_s.arg(path, written.error()));
    return path;
}

QString AttestationFiles::fileName(const CardRecord& record)
{
    const QString name =
        objectText(record.text(CardKey::lastName)) + u' ' + objectText(record.text(CardKey::firstName));
    return fileNameFromText(name, u"pdf"_s);
}
