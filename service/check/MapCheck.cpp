#include "service/check/MapCheck.h"

#include "service/embedded/CardDocument.h"
#include "service/embedded/CardElements.h"
#include "service/embedded/CardFileList.h"

#include <QDir>
#include <QJsonDocument>
#include <QtEndian>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// As much as the service reads of a card.
constexpr qint64 largestFile = qint64{64} * 1024;

/// The bytes that a name gives in hexadecimal digits; absent for another name.
std::optional<QByteArray> bytesOfName(const QString& name)
{
    const QByteArray bytes = QByteArray::fromHex(name.toLatin1());
    return !bytes.isEmpty() && bytes.toHex() == name.toLower().toLatin1() ? std::optional(bytes) : std::nullopt;
}

/// Where JSON is malformed; absent when it is not.
std::optional<CheckFault> faultOfJson(const QByteArray& json)
{
    QJsonParseError error;
    static_cast<void>(QJsonDocument::fromJson(json, &error));
    if (error.error == QJsonParseError::NoError)
        return std::nullopt;
    const QByteArray before = json.first(std::clamp<qsizetype>(error.offset, 0, json.size()));
    const qsizetype line = before.count('\n') + 1;
    const qsizetype column = before.size() - (before.lastIndexOf('\n') + 1);
    return CheckFault{.place = u"ligne %1, octet %2"_s.arg(line).arg(column),
                      .reason = u"ce n’est pas du JSON (%1)"_s.arg(error.errorString())};
}

bool hasField(const CardMap& map, QStringView path)
{
    return std::ranges::any_of(map.beneficiaries, [path](const CardRecordSource& source) {
        return std::ranges::any_of(source.fields, [path](const CardField& field) { return field.path == path; });
    });
}

bool isUsed(const CardMap& map, const CardFile& file)
{
    const auto isNamed = [&file](const auto& user) { return user.file == file.name; };
    return (file.id && (std::ranges::find(map.identity, *file.id) != map.identity.end() || map.pointers == file.id)) ||
           std::ranges::any_of(map.values, isNamed) || std::ranges::any_of(map.beneficiaries, isNamed);
}

/// What is allowed in a map, but makes it useless for cards, or is useless itself.
QStringList remarksOn(const CardMap& map)
{
    QStringList remarks;
    for (const CardElement& element : CardElements::beneficiaryElements) {
        if (element.need != CardNeed::Optional && !hasField(map, element.path))
            remarks.append(
                u"aucun champ ne donne « %1 » : toute carte lue avec ce plan est refusée"_s.arg(element.path));
    }
    if (!hasField(map, CardElements::birthDate) && !hasField(map, CardElements::shortBirthDate))
        remarks.append(u"aucun champ ne donne « %1 » ou « %2 » : toute carte lue avec ce plan est refusée"_s.arg(
            CardElements::birthDate, CardElements::shortBirthDate));
    for (const CardFile& file : map.files) {
        if (!isUsed(map, file))
            remarks.append(u"le fichier « %1 » est lu, mais ne sert pas"_s.arg(file.name));
    }
    return remarks;
}

/// The files that a card must have, and does not.
QList<CheckFault> refusedFiles(const std::vector<CardFileToRead>& wanted, const RecordedCard& card)
{
    QList<CheckFault> faults;
    for (const CardFileToRead& file : wanted) {
        if (file.required && !card.files.contains(file.id))
            faults.append({u"carte, fichier « %1 »"_s.arg(file.name),
                           u"il manque (%1/%2)"_s.arg(QString::fromLatin1(file.id.application.toHex().toUpper()),
                                                      cardFileNumber(file.id))});
    }
    return faults;
}

void readCard(const CardMap& map, const RecordedCard& card, CheckReport& report)
{
    if (!card.applications.contains(map.application)) {
        report.faults.append({u"carte"_s, u"elle n’a pas l’application %1 de ce plan"_s.arg(
                                              QString::fromLatin1(map.application.toHex(' ').toUpper()))});
        return;
    }
    report.faults += refusedFiles(firstCardFiles(map), card);
    if (std::ranges::none_of(map.identity, [&card](const CardFileId& id) { return card.files.contains(id); }))
        report.faults.append({u"carte"_s, u"tous les fichiers qui l’identifient manquent"_s});
    if (!report.faults.isEmpty())
        return;
    const std::expected<std::vector<CardFileToRead>, CardGap> others = otherCardFiles(map, card.files);
    if (!others) {
        report.faults.append({u"carte"_s, others.error().explanation});
        return;
    }
    report.faults += refusedFiles(*others, card);
    if (!report.faults.isEmpty())
        return;
    const std::expected<QString, CardGap> document = cardDocument(map, card.files);
    if (!document) {
        report.faults.append({u"carte"_s, document.error().explanation});
        return;
    }
    report.facts.append({u"Bénéficiaires lus"_s, QString::number(document->count(u"<T_AsnBeneficiaire>"_s))});
}

} // namespace

std::expected<RecordedCard, QString> readRecordedCard(const QString& folder)
{
    RecordedCard card;
    const QDir applications(folder);
    if (!applications.exists())
        return std::unexpected(u"%1 n’est pas un dossier"_s.arg(folder));
    for (const QString& application : applications.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const std::optional<QByteArray> name = bytesOfName(application);
        if (!name)
            return std::unexpected(u"%1/%2 n’a pas le nom d’une application"_s.arg(folder, application));
        card.applications.append(*name);
        const QDir files(applications.filePath(application));
        for (const QString& file : files.entryList(QDir::Files)) {
            const std::optional<QByteArray> number = bytesOfName(file);
            QFile content(files.filePath(file));
            if (!number || number->size() != sizeof(quint16))
                return std::unexpected(u"%1 n’a pas le nom d’un fichier de carte"_s.arg(content.fileName()));
            if (!content.open(QIODevice::ReadOnly))
                return std::unexpected(u"%1 : %2"_s.arg(content.fileName(), content.errorString()));
            card.files.emplace(CardFileId{*name, qFromBigEndian<quint16>(number->constData())},
                               content.read(largestFile));
        }
    }
    return card;
}

CheckReport checkCardMap(const QByteArray& json, const std::optional<RecordedCard>& card)
{
    CheckReport report{.subject = u"un plan de carte"_s, .facts = {}, .remarks = {}, .faults = {}};
    if (const std::optional<CheckFault> fault = faultOfJson(json)) {
        report.faults.append(*fault);
        return report;
    }
    const std::expected<CardMap, QStringList> map = readCardMap(json);
    if (!map) {
        for (const QString& fault : map.error())
            report.faults.append({{}, fault});
        return report;
    }
    report.facts.append({u"Carte"_s, u"%1, version %2"_s.arg(map->name, map->version)});
    report.facts.append({u"Application"_s, QString::fromLatin1(map->application.toHex(' ').toUpper())});
    report.facts.append({u"Fichiers"_s, QString::number(map->files.size())});
    report.remarks = remarksOn(*map);
    if (card)
        readCard(*map, *card, report);
    else
        report.remarks.append(u"aucune carte n’a été lue avec ce plan (voir --card)"_s);
    return report;
}
