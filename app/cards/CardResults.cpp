#include "app/cards/CardResults.h"

#include "platform/NativePath.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

constexpr int schemaVersion = 1;

QJsonObject jsonOf(const CardSource& source)
{
    switch (source.kind) {
    case CardSource::Kind::File:
        return {{"kind"_L1, u"file"_s}, {"path"_L1, jsonPath(source.path)}};
    case CardSource::Kind::StandardInput:
        return {{"kind"_L1, u"standard-input"_s}};
    case CardSource::Kind::Reader:
        break;
    }
    return {{"kind"_L1, u"reader"_s}};
}

QJsonObject jsonOf(const Error& error)
{
    return {{"domain"_L1, error.domain()},
            {"code"_L1, error.code()},
            {"message"_L1, error.localizedDescriptionWithDetail()}};
}

} // namespace

QString jsonPath(const QString& path)
{
    return QString::fromUtf8(bytesOfPath(path));
}

QString CardSource::prefix() const
{
    switch (kind) {
    case Kind::File:
        return path + u" : "_s;
    case Kind::StandardInput:
        return u"entrée standard : "_s;
    case Kind::Reader:
        break;
    }
    return {};
}

CardResults::CardResults(const QString& command)
    : m_document({{"format"_L1, u"pelmora-results"_s}, {"version"_L1, schemaVersion}, {"command"_L1, command}})
{
}

void CardResults::add(const CardSource& source, const std::expected<QJsonObject, Error>& outcome)
{
    QJsonObject result = outcome.value_or(QJsonObject());
    result["source"_L1] = jsonOf(source);
    if (!outcome)
        result["error"_L1] = jsonOf(outcome.error());
    m_results.append(result);
}

void CardResults::setFailure(const Error& error)
{
    m_document["error"_L1] = jsonOf(error);
}

QByteArray CardResults::document() const
{
    QJsonObject document = m_document;
    document["results"_L1] = m_results;
    return QJsonDocument(document).toJson();
}
