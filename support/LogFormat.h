#pragma once

#include "platform/Error.h"

#include <QStringList>
#include <fmt/format.h>

// Qt's texts in log formats, as UTF-8. Records about patients have no formatter on purpose.

template <>
struct fmt::formatter<QString> : fmt::formatter<fmt::string_view>
{
    template <typename Context>
    auto format(const QString& text, Context& context) const
    {
        const QByteArray utf8 = text.toUtf8();
        return fmt::formatter<fmt::string_view>::format({utf8.constData(), static_cast<std::size_t>(utf8.size())},
                                                        context);
    }
};

template <>
struct fmt::formatter<QStringList> : fmt::formatter<QString>
{
    template <typename Context>
    auto format(const QStringList& texts, Context& context) const
    {
        return fmt::formatter<QString>::format(u'(' + texts.join(QStringLiteral(", ")) + u')', context);
    }
};

template <>
struct fmt::formatter<Error> : fmt::formatter<QString>
{
    template <typename Context>
    auto format(const Error& error, Context& context) const
    {
        return fmt::formatter<QString>::format(error.localizedDescription(), context);
    }
};
