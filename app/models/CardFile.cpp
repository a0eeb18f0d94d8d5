#include "app/models/CardFile.h"

#include "card/CardKeys.h"
#include "card/CardParser.h"
#include "card/wire/TextDecoding.h"
#include "card/wire/XmlBytes.h"
#include "platform/NativePath.h"
#include "platform/XmlDocument.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView errorDomain{"Fichier"};

std::expected<QByteArray, Error> readFile(const QString& path)
{
    QFile file;
    // Nothing that has to be waited for, such as a pipe, and nothing without an end.
    const std::error_code error = openPlainFile(file, path);
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory)
        return std::unexpected(Error(errorDomain, QFileDevice::OpenError, u"Le fichier n’existe pas."_s));
    if (error)
        return std::unexpected(Error(errorDomain, QFileDevice::OpenError, u"Le fichier ne peut pas être lu."_s));
    // One byte more than a document may have, so that a larger one is told from one of just that size.
    QByteArray bytes = file.read(qint64{XmlDocument::maximumSize} + 1);
    if (file.error() != QFileDevice::NoError)
        return std::unexpected(Error(errorDomain, file.error(), u"Le fichier ne peut pas être lu."_s));
    return bytes;
}

std::expected<XmlDocument, Error> parse(const QByteArray& bytes)
{
    std::optional<QString> text = decodeUtf8(bytes);
    // A null character tells UTF-16 from the UTF-8 that plain letters of it look like.
    if (!text || text->contains(QChar::Null))
        text = decodeXmlBytes(bytes);
    if (!text)
        return std::unexpected(Error(errorDomain, QFileDevice::ReadError, u"Le fichier n’est pas un texte lisible."_s));
    return XmlDocument::fromText(*text);
}

} // namespace

std::expected<CardRecord, Error> loadCardFile(const QString& path)
{
    const std::expected<QByteArray, Error> bytes = readFile(path);
    if (!bytes)
        return std::unexpected(bytes.error());
    const std::expected<XmlDocument, Error> document = parse(*bytes);
    if (!document)
        return std::unexpected(document.error());
    std::expected<CardRecord, Error> record = parseCardDocument(&*document);
    if (record)
        record->setText(CardKey::fundCodeLibelle, u"Non spécifié"_s);
    return record;
}
