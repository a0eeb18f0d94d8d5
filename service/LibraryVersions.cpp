#include "service/LibraryVersions.h"

#include <QXmlStreamWriter>

using namespace Qt::StringLiterals;

QString informationsDocument(const LibraryVersions& versions)
{
    QString document;
    QXmlStreamWriter writer(&document);
    writer.writeStartDocument();
    writer.writeStartElement(u"informations"_s);
    writer.writeStartElement(u"apiLecVitale"_s);
    writer.writeTextElement(u"version"_s, versions.library);
    writer.writeTextElement(u"tableLibVitale"_s, versions.cardTable);
    writer.writeTextElement(u"tableLibOrgDest"_s, versions.destinationTable);
    writer.writeTextElement(u"tableHab"_s, versions.authorisationTable);
    writer.writeEndDocument();
    return document;
}
