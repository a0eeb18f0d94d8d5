#include "attestation/page/AttestationPdf.h"

#include "attestation/page/AttestationLayout.h"
#include "attestation/page/PageOnSheet.h"
#include "attestation/page/PagePainter.h"

#include <QBuffer>
#include <QPainter>
#include <QPdfWriter>

using namespace Qt::StringLiterals;

namespace {

constexpr int pointsPerInch = 72;

bool writeDocument(QIODevice& device, const PageInk& ink, const QPageLayout& sheet)
{
    QPdfWriter writer(&device);
    writer.setPdfVersion(QPagedPaintDevice::PdfVersion_A1b);
    writer.setTitle(attestationTitle.toString());
    writer.setCreator(u"Pelmora"_s);
    writer.setPageLayout({sheet.pageSize(), sheet.orientation(), QMarginsF()});
    // One unit of the writer is one unit of the page.
    writer.setResolution(pointsPerInch * pageUnitsPerPoint);

    QPainter painter;
    if (!painter.begin(&writer))
        return false;
    const PageOnSheet place = PageOnSheet::on(sheet.fullRectPoints().size());
    painter.translate(place.topLeft * pageUnitsPerPoint);
    painter.scale(place.scale, place.scale);
    PagePainter::paint(painter, ink, PageMedium::Document);
    return painter.end();
}

} // namespace

QPageLayout attestationSheet()
{
    return {QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF()};
}

QByteArray renderAttestationPdf(const AttestationPage& page, const PageFonts& fonts, const QPageLayout& sheet)
{
    QByteArray document;
    QBuffer buffer(&document);
    buffer.open(QIODevice::WriteOnly);
    if (!writeDocument(buffer, AttestationLayout::drawRect(page, attestationPageSize, fonts), sheet))
        return {};
    return document;
}
