#include "app/CardFile.h"

#include "card/CardKeys.h"
#include "card/CardParser.h"
#include "card/XmlBytes.h"
#include "platform/XmlDocument.h"

#include <QFile>
#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView errorDomain{"Fichier"};

std::expected<QByteArray, Error> readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        const bool missing = !file.exists();
        return std::unexpected(Error(errorDomain, file.error(),
                                     missing ? u"Le fichier n’existe pas."_s : u"Le fichier ne peut pas être lu."_s));
    }
    // One byte more than a document may have, so that a larger one is told from one of just that size.
    QByteArray bytes = file.read(qint64{XmlDocument::maximumSize} + 1);
    if (file.error() != QFileDevice::NoError)
        return std::unexpected(Error(errorDomain, file.error(), u"Le fichier ne peut pas être lu."_s));
    return bytes;
}

std::expected<XmlDocument, Error> parse(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder(bytes);
    if (decoder.hasError()) {
        const std::optional<QString> declared = decodeXmlBytes(bytes);
        if (!declared)
            return std::unexpected(
                Error(errorDomain, QFileDevice::ReadError, u"Le fichier n’est pas un texte lisible."_s));
        text = *declared;
    }
    return XmlDocument::fromText(text);
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
