#include "attestation/page/PrintInfo.h"

using namespace Qt::StringLiterals;

PrintInfo PrintInfo::defaultsOf(const PrintQueue& queue)
{
    PrintInfo info;
    info.queue = queue.name;
    if (!queue.paper.isEmpty()) {
        // In whole points: what is less is rounding of other units.
        info.sheet.paper = queue.paper.toSize();
        info.media = queue.media;
    }
    info.sheet.isLandscape = queue.landscape;
    info.settings = queue.defaults;
    return info;
}

void PrintInfo::set(const QByteArray& name, const QByteArray& value)
{
    settings.removeIf([&name](const PrintOption& setting) { return setting.name == name; });
    settings.append(PrintOption{name, value});
}

PrintJob PrintInfo::job(const QByteArray& pdf) const
{
    PrintInfo info = *this;
    info.set("media", media);
    info.set("print-scaling", "none");
    // The value for "as it is": a document that lies across its sheet already is not turned again.
    info.set("orientation-requested", "3");
    // Copies are sheets of their own, also where the queue prints on both sides.
    info.set("sides", "one-sided");
    return {queue, attestationJobName.toString(), pdf, info.settings};
}
