#include "attestation/document/AttestationPdf.h"

#include "attestation/document/PdfContent.h"
#include "attestation/document/PdfDescription.h"
#include "attestation/document/PdfStructure.h"
#include "attestation/page/AttestationLayout.h"
#include "attestation/page/SchemeLogos.h"
#include "card/PelmoraError.h"
#include "support/MXLog.h"

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>

#include <exception>
#include <string>

using namespace Qt::StringLiterals;
using Object = QPDFObjectHandle;

namespace {

Error documentError(const QString& text)
{
    return {PelmoraError::domain, PelmoraError::internalError().code(), text};
}

// The logo's drawing, for the content to show at its place.
Object logoForm(const VectorImage& logo, QPDF& document)
{
    Object form = Object::newStream(&document, logo.operators.toStdString());
    const auto length = [](double value) { return Object::newReal(value, 2); };
    const Object box = Object::newArray(
        {Object::newInteger(0), Object::newInteger(0), length(logo.size.width()), length(logo.size.height())});
    Object dictionary = form.getDict();
    dictionary.replaceKey("/Type", Object::newName("/XObject"));
    dictionary.replaceKey("/Subtype", Object::newName("/Form"));
    dictionary.replaceKey("/BBox", box);
    dictionary.replaceKey("/Resources", Object::newDictionary());
    return form;
}

Object addSheet(QPDF& document, QSizeF size)
{
    const auto length = [](double value) { return Object::newReal(value, 2); };
    const Object page = document.makeIndirectObject(Object::newDictionary({
        {"/Type", Object::newName("/Page")},
        {"/MediaBox",
         Object::newArray({Object::newInteger(0), Object::newInteger(0), length(size.width()), length(size.height())})},
        {"/StructParents", Object::newInteger(0)},
        {"/Tabs", Object::newName("/S")},
    }));
    document.addPage(page, false);
    return document.getAllPages().front();
}

void fillSheet(QPDF& document, Object sheet, const AttestationPage& page, const PageFonts& pageFonts,
               const PaperSheet& paper)
{
    PdfFonts fonts;
    PdfContent content(paper, fonts);
    content.paint(AttestationLayout::drawRect(page, attestationPageSize, pageFonts));

    Object resources = Object::newDictionary({{"/Font", fonts.embedIn(document)}});
    if (page.logo)
        resources.replaceKey("/XObject",
                             Object::newDictionary({{logoFormName, logoForm(*page.logo->image, document)}}));
    sheet.replaceKey("/Resources", resources);
    sheet.replaceKey("/Contents", Object::newStream(&document, content.stream()));
    document.getRoot().replaceKey("/StructTreeRoot", structureTree(page, content.marks(), document, sheet));
}

QByteArray written(QPDF& document)
{
    QPDFWriter writer(document);
    writer.setOutputMemory();
    writer.setMinimumPDFVersion("1.4");
    writer.setObjectStreamMode(qpdf_o_disable);
    writer.setNewlineBeforeEndstream(true);
    writer.setDeterministicID(true);
    writer.write();
    const auto bytes = writer.getBufferSharedPointer();
    return {reinterpret_cast<const char*>(bytes->getBuffer()), qsizetype(bytes->getSize())};
}

} // namespace

std::expected<QByteArray, Error> renderAttestationPdf(const AttestationPage& page, const PageFonts& fonts,
                                                      const PaperSheet& sheet, const QDateTime& time)
{
    if (page.logo && !page.logo->image) {
        return std::unexpected(
            documentError(u"Le logo du régime (%1) est abîmé. Réinstallez l'application."_s.arg(page.logo->name)));
    }
    // The library tells what it cannot do by exceptions.
    try {
        QPDF document;
        document.emptyPDF();
        describeDocument(document, time);
        fillSheet(document, addSheet(document, sheet.size()), page, fonts, sheet);
        return written(document);
    } catch (const std::exception& exception) {
        MXLog::logError("The document cannot be made: {}", exception.what());
        return std::unexpected(documentError(u"Le document PDF n'a pas pu être préparé."_s));
    }
}
