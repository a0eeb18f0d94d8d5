#include "attestation/document/PdfDescription.h"

#include "attestation/document/PdfNumber.h"
#include "attestation/document/SrgbProfile.h"
#include "attestation/page/AttestationTitle.h"

#include <fmt/format.h>

#include <cstdlib>
#include <string>

using namespace Qt::StringLiterals;

namespace {

constexpr auto programName = "Pelmora"_L1;

// As PDF writes it: D:20261122083000+01'00'
std::string pdfTime(const QDateTime& time)
{
    const int minutes = time.offsetFromUtc() / 60;
    const QString zone =
        QString::asprintf("%c%02d'%02d'", minutes < 0 ? '-' : '+', std::abs(minutes) / 60, std::abs(minutes) % 60);
    return (time.toString(u"'D:'yyyyMMddHHmmss"_s) + zone).toStdString();
}

// The same description for programs that manage archives. PDF/A wants every name described that it does not know: that
// of PDF/UA.
QByteArray metadata(const QDateTime& time)
{
    const QString text = uR"(<?xpacket begin="%4" id="W5M0MpCehiHzreSzNTczkc9d"?>
<x:xmpmeta xmlns:x="adobe:ns:meta/">
<rdf:RDF xmlns:rdf="http://www.w3.org/1999/02/22-rdf-syntax-ns#">
<rdf:Description rdf:about="" xmlns:dc="http://purl.org/dc/elements/1.1/">
<dc:title><rdf:Alt><rdf:li xml:lang="x-default">%1</rdf:li></rdf:Alt></dc:title>
<dc:language><rdf:Bag><rdf:li>fr-FR</rdf:li></rdf:Bag></dc:language>
</rdf:Description>
<rdf:Description rdf:about="" xmlns:xmp="http://ns.adobe.com/xap/1.0/" xmlns:pdf="http://ns.adobe.com/pdf/1.3/">
<xmp:CreatorTool>%2</xmp:CreatorTool>
<xmp:CreateDate>%3</xmp:CreateDate>
<xmp:ModifyDate>%3</xmp:ModifyDate>
<pdf:Producer>%2</pdf:Producer>
</rdf:Description>
<rdf:Description rdf:about="" xmlns:pdfaid="http://www.aiim.org/pdfa/ns/id/">
<pdfaid:part>1</pdfaid:part>
<pdfaid:conformance>A</pdfaid:conformance>
</rdf:Description>
<rdf:Description rdf:about="" xmlns:pdfuaid="http://www.aiim.org/pdfua/ns/id/">
<pdfuaid:part>1</pdfuaid:part>
</rdf:Description>
<rdf:Description rdf:about="" xmlns:pdfaExtension="http://www.aiim.org/pdfa/ns/extension/"
 xmlns:pdfaSchema="http://www.aiim.org/pdfa/ns/schema#" xmlns:pdfaProperty="http://www.aiim.org/pdfa/ns/property#">
<pdfaExtension:schemas><rdf:Bag><rdf:li rdf:parseType="Resource">
<pdfaSchema:schema>PDF/UA identification schema</pdfaSchema:schema>
<pdfaSchema:namespaceURI>http://www.aiim.org/pdfua/ns/id/</pdfaSchema:namespaceURI>
<pdfaSchema:prefix>pdfuaid</pdfaSchema:prefix>
<pdfaSchema:property><rdf:Seq><rdf:li rdf:parseType="Resource">
<pdfaProperty:name>part</pdfaProperty:name>
<pdfaProperty:valueType>Integer</pdfaProperty:valueType>
<pdfaProperty:category>internal</pdfaProperty:category>
<pdfaProperty:description>The part of PDF/UA that the document keeps</pdfaProperty:description>
</rdf:li></rdf:Seq></pdfaSchema:property>
</rdf:li></rdf:Bag></pdfaExtension:schemas>
</rdf:Description>
</rdf:RDF>
</x:xmpmeta>
<?xpacket end="w"?>
)"_s;
    const QString made = time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODate);
    return text.arg(attestationTitle, programName, made, QChar(QChar::ByteOrderMark)).toUtf8();
}

// PDF/A: what the numbers of the colours mean.
std::string outputIntent(PdfFile& file)
{
    constexpr auto space = "(sRGB IEC61966-2.1)";
    const PdfReference profile = file.addStream(deflatedSrgbProfile(), "/N 3 ", PdfFile::Compression::Done);
    return fmt::format("<< /Type /OutputIntent /S /GTS_PDFA1 /OutputConditionIdentifier {} /Info {} "
                       "/DestOutputProfile {} >>",
                       space, space, profile.text());
}

} // namespace

PdfReference addInformation(PdfFile& file, const QDateTime& time)
{
    const std::string made = pdfTime(time);
    return file.add(fmt::format("<< /Title {} /Creator ({}) /Producer ({}) /CreationDate ({}) /ModDate ({}) >>",
                                pdfString(attestationTitle), programName.data(), programName.data(), made, made));
}

std::string catalogDescription(PdfFile& file, const QDateTime& time)
{
    const PdfReference description =
        file.addStream(metadata(time).toStdString(), "/Type /Metadata /Subtype /XML ", PdfFile::Compression::None);
    return fmt::format("/Lang (fr-FR) /MarkInfo << /Marked true >> /ViewerPreferences << /DisplayDocTitle true >> "
                       "/Metadata {} /OutputIntents [{}]",
                       description.text(), outputIntent(file));
}
