#pragma once

#include <QMetaType>
#include <QString>
#include <QVariant>

#include <optional>

/// A failure as a value: a domain, a code within it and, where there is one, a text for people.
/// Two errors are equal when domain and code are.
class Error
{
public:
    Error(QString domain, int code, std::optional<QString> description = std::nullopt);

    [[nodiscard]] const QString& domain() const { return m_domain; }
    [[nodiscard]] int code() const { return m_code; }

    /// The text given with the error; absent for errors that carry no user information.
    [[nodiscard]] const std::optional<QString>& description() const { return m_description; }

    /// The same error with more for people to know beside its text: what they can do.
    [[nodiscard]] Error withDetail(const QString& detail) const;
    /// Empty when there is nothing more to know.
    [[nodiscard]] const QString& detail() const { return m_detail; }

    /// What an alert shows: the description or, where there is none, a sentence that names the domain and the code.
    [[nodiscard]] QString localizedDescription() const;
    /// The same where there is one text only, as on a terminal: with the detail on a line of its own.
    [[nodiscard]] QString localizedDescriptionWithDetail() const;

    friend bool operator==(const Error& left, const Error& right)
    {
        return left.m_domain == right.m_domain && left.m_code == right.m_code;
    }

private:
    QString m_domain;
    int m_code;
    std::optional<QString> m_description;
    QString m_detail;
};

Q_DECLARE_METATYPE(Error)

/// The error that a value holds, as user information does; nothing when it holds none.
[[nodiscard]] std::optional<Error> errorInValue(const QVariant& value);
