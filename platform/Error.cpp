#include "platform/Error.h"

#include <utility>

using namespace Qt::StringLiterals;

Error::Error(QString domain, int code, std::optional<QString> description)
    : m_domain(std::move(domain))
    , m_code(code)
    , m_description(std::move(description))
{
}

QString Error::localizedDescription() const
{
    if (m_description)
        return *m_description;
    return u"L’opération n’a pas pu s’achever. (erreur %1 %2.)"_s.arg(m_domain, QString::number(m_code));
}

QString Error::localizedDescriptionWithDetail() const
{
    return m_detail.isEmpty() ? localizedDescription() : localizedDescription() + u'\n' + m_detail;
}

Error Error::withDetail(const QString& detail) const
{
    Error error = *this;
    error.m_detail = detail;
    return error;
}

std::optional<Error> errorInValue(const QVariant& value)
{
    if (value.metaType() != QMetaType::fromType<Error>())
        return std::nullopt;
    // value<Error>() would need a default constructor.
    return *static_cast<const Error*>(value.constData());
}
