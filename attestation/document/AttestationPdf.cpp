#include "attestation/document/AttestationPdf.h"

#include "attestation/document/PdfContent.h"
#include "attestation/document/PdfDescription.h"
#include "attestation/document/PdfFile.h"
#include "attestation/document/PdfNumber.h"
#include "attestation/document/PdfStructure.h"
#include "attestation/page/AttestationLayout.h"
#include "attestation/page/SchemeLogos.h"
#include "card/PelmoraError.h"
#include "support/MXLog.h"

#include <fmt/format.h>

#include <optional>
#include <string>

using namespace Qt::StringLiterals;

namespace {

Error documentError(const QString& text)
{
    return {PelmoraError::domain, PelmoraError::internalError().code(), text};
}

std::string boxOf(QSizeF size)
{
    return fmt::format("[0 0 {} {}]", pdfNumber(size.width()), pdfNumber(size.height()));
}

// The logo's drawing, for the content to show at its place.
PdfReference addLogo(PdfFile& file, const VectorImage& logo)
{
    return file.addStream(std::string_view(logo.operators.constData(), std::size_t(logo.operators.size())),
                          fmt::format("/Type /XObject /Subtype /Form /BBox {} /Resources << >> ", boxOf(logo.size)));
}

// All but the information dictionary. Nothing when a font cannot be cut or the structure does not hold all that is
// marked.
std::optional<PdfReference> addDocument(PdfFile& file, const AttestationPage& page, const PageFonts& pageFonts,
                                        const PaperSheet& paper, const std::string& description)
{
    PdfFonts fonts;
    PdfContent content(paper, fonts);
    content.paint(AttestationLayout::drawRect(page, attestationPageSize, pageFonts));

    const PdfReference sheet = file.reserve();
    const std::optional<std::string> fontEntries = fonts.embedIn(file);
    const std::optional<PdfReference> structure = addStructureTree(file, page, content.marks(), sheet);
    if (!fontEntries || !structure)
        return std::nullopt;
    const std::string logo =
        page.logo ? fmt::format("/XObject << {} {} >> ", logoFormName, addLogo(file, *page.logo->image).text())
                  : std::string();
    const PdfReference sheets = file.reserve();
    file.set(sheet, fmt::format("<< /Type /Page /Parent {} /MediaBox {} /StructParents 0 /Tabs /S "
                                "/Resources << /Font << {}>> {}>> /Contents {} >>",
                                sheets.text(), boxOf(paper.size()), *fontEntries, logo,
                                file.addStream(content.stream()).text()));
    file.set(sheets, fmt::format("<< /Type /Pages /Kids [{}] /Count 1 >>", sheet.text()));
    return file.add(fmt::format("<< /Type /Catalog /Pages {} /StructTreeRoot {} {} >>", sheets.text(),
                                structure->text(), description));
}

} // namespace

std::expected<QByteArray, Error> renderAttestationPdf(const AttestationPage& page, const PageFonts& fonts,
                                                      const PaperSheet& sheet, const QDateTime& time)
{
    if (page.logo && !page.logo->image) {
        return std::unexpected(
            documentError(u"Le logo du régime (%1) est abîmé. Réinstallez l'application."_s.arg(page.logo->name)));
    }
    PdfFile file;
    const PdfReference information = addInformation(file, time);
    const std::optional<PdfReference> catalog = addDocument(file, page, fonts, sheet, catalogDescription(file, time));
    if (!catalog) {
        MXLog::logError("The document cannot be made: a font cannot be cut, or a text has no place in the structure.");
        return std::unexpected(documentError(u"Le document PDF n'a pas pu être préparé."_s));
    }
    return std::move(file).finished(*catalog, information);
}
