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
    // Plain files only: a pipe could block or never end.
    const std::error_code error = openPlainFile(file, path);
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory)
        return std::unexpected(Error(errorDomain, QFileDevice::OpenError, u"Le fichier n’existe pas."_s));
    if (error)
        return std::unexpected(Error(errorDomain, QFileDevice::OpenError, u"Le fichier ne peut pas être lu."_s));
    // One byte more than allowed, to detect a larger file.
    QByteArray bytes = file.read(qint64{XmlDocument::maximumSize} + 1);
    if (file.error() != QFileDevice::NoError)
        return std::unexpected(Error(errorDomain, file.error(), u"Le fichier ne peut pas être lu."_s));
    return bytes;
}

std::expected<XmlDocument, Error> parse(const QByteArray& bytes)
{
    std::optional<QString> text = decodeUtf8(bytes);
    // UTF-16 text can be valid UTF-8, but then has null characters.
    if (!text || text->contains(QChar::Null))
        text = decodeXmlBytes(bytes);
    if (!text)
        return std::unexpected(Error(errorDomain, QFileDevice::ReadError, u"Le fichier n’est pas un texte lisible."_s));
    return XmlDocument::fromText(*text);
}

Error notACard(const Error& reason)
{
    return {reason.domain(), reason.code(),
            u"Ce fichier n’est pas une carte Vitale. "_s + reason.localizedDescription()};
}

} // namespace

std::expected<CardRecord, Error> loadCardFile(const QString& path)
{
    const std::expected<QByteArray, Error> bytes = readFile(path);
    if (!bytes)
        return std::unexpected(bytes.error());
    const std::expected<XmlDocument, Error> document = parse(*bytes);
    if (!document)
        return std::unexpected(notACard(document.error()));
    std::expected<CardRecord, Error> record = parseCardDocument(&*document);
    if (!record) {
        const bool isCard = document->documentNode().firstNode(CardPath::document.utf8()).has_value();
        return std::unexpected(isCard ? record.error() : notACard(record.error()));
    }
    record->setText(CardKey::fundCodeLibelle, u"Non spécifié"_s);
    return record;
}
