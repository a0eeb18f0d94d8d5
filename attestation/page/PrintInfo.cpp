#include "attestation/page/PrintInfo.h"

#include "attestation/page/AttestationPdf.h"

using namespace Qt::StringLiterals;

PrintInfo PrintInfo::defaultsOf(const PrintQueue& queue)
{
    PrintInfo info;
    info.queue = queue.name;
    info.sheet = attestationSheet();
    if (!queue.paper.isEmpty()) {
        // Papers are known by name where their size is one of the usual ones.
        info.sheet.setPageSize(QPageSize(queue.paper, QPageSize::Point), QMarginsF());
        info.media = queue.media;
    }
    if (queue.landscape)
        info.sheet.setOrientation(QPageLayout::Landscape);
    info.settings = queue.defaults;
    return info;
}

Error PrintInfo::documentError()
{
    return {printErrorDomain.toString(), 0, u"L’attestation n’a pas pu être préparée pour l’impression."_s};
}

void PrintInfo::set(const QByteArray& name, const QByteArray& value)
{
    settings.removeIf([&name](const PrintOption& setting) { return setting.name == name; });
    settings.append(PrintOption{name, value});
}

PrintJob PrintInfo::job(const QByteArray& pdf) const
{
    PrintInfo info = *this;
    info.set("media", media.isEmpty() ? sheet.pageSize().key().toUtf8() : media);
    info.set("print-scaling", "none");
    // The value for "as it is": a document that lies across its sheet already is not turned again.
    info.set("orientation-requested", "3");
    // Copies are sheets of their own, also where the queue prints on both sides.
    info.set("sides", "one-sided");
    return {queue, attestationJobName.toString(), pdf, info.settings};
}
