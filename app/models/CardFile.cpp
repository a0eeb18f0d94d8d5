#include "app/models/CardFile.h"

#include "card/CardKeys.h"
#include "card/CardParser.h"
#include "card/wire/TextDecoding.h"
#include "card/wire/XmlBytes.h"
#include "platform/NativePath.h"
#include "platform/XmlDocument.h"

#include <QFile>

#include <algorithm>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView fileErrorDomain{"Fichier"};

// One byte more than allowed, to detect a larger file.
constexpr qint64 longestRead = qint64{XmlDocument::maximumSize} + 1;
constexpr qint64 pipeSize = qint64{64} * 1024;

std::expected<QByteArray, Error> readFile(const QString& path)
{
    QFile file;
    // Plain files only: a pipe could block or never end.
    const std::error_code error = openPlainFile(file, path);
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory)
        return std::unexpected(Error(fileErrorDomain, QFileDevice::OpenError, u"Le fichier n’existe pas."_s));
    if (error)
        return std::unexpected(Error(fileErrorDomain, QFileDevice::OpenError, u"Le fichier ne peut pas être lu."_s));
    QByteArray bytes = file.read(longestRead);
    if (file.error() != QFileDevice::NoError)
        return std::unexpected(Error(fileErrorDomain, file.error(), u"Le fichier ne peut pas être lu."_s));
    return bytes;
}

std::expected<QByteArray, Error> readStandardInput()
{
    QFile input;
    QByteArray bytes;
    bool isRead = input.open(STDIN_FILENO, QIODevice::ReadOnly | QIODevice::Unbuffered);
    // A pipe gives what is there, until its end.
    while (isRead && bytes.size() < longestRead) {
        const QByteArray part = input.read(std::min(pipeSize, longestRead - bytes.size()));
        isRead = input.error() == QFileDevice::NoError;
        if (part.isEmpty())
            break;
        bytes += part;
    }
    if (!isRead)
        return std::unexpected(
            Error(fileErrorDomain, QFileDevice::ReadError, u"L’entrée standard ne peut pas être lue."_s));
    return bytes;
}

std::expected<XmlDocument, Error> parse(const QByteArray& bytes)
{
    std::optional<QString> text = decodeUtf8(bytes);
    // UTF-16 text can be valid UTF-8, but then has null characters.
    if (!text || text->contains(QChar::Null))
        text = decodeXmlBytes(bytes);
    if (!text)
        return std::unexpected(
            Error(fileErrorDomain, QFileDevice::ReadError, u"Le fichier n’est pas un texte lisible."_s));
    return XmlDocument::fromText(*text);
}

Error notACard(const Error& reason)
{
    return {reason.domain(), reason.code(),
            u"Ce fichier n’est pas une carte Vitale. "_s + reason.localizedDescription()};
}

std::expected<CardRecord, Error> recordIn(const std::expected<QByteArray, Error>& bytes)
{
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

} // namespace

std::expected<CardRecord, Error> loadCardFile(const QString& path)
{
    return recordIn(readFile(path));
}

std::expected<CardRecord, Error> loadCardFromStandardInput()
{
    return recordIn(readStandardInput());
}
