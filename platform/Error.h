#pragma once

#include <QMetaType>
#include <QVariant>

#include <optional>

/// A failure: domain, code and optionally a text for users. Errors with the same domain and code are equal.
class Error
{
public:
    Error(QString domain, int code, std::optional<QString> description = std::nullopt);

    [[nodiscard]] const QString& domain() const { return m_domain; }
    [[nodiscard]] int code() const { return m_code; }

    /// Absent for errors that were made without a text.
    [[nodiscard]] const std::optional<QString>& description() const { return m_description; }

    /// The same error with a second text for users: what they can do.
    [[nodiscard]] Error withDetail(const QString& detail) const;
    /// Empty when there is none.
    [[nodiscard]] const QString& detail() const { return m_detail; }

    /// What an alert shows: the description or else a sentence with the domain and the code.
    [[nodiscard]] QString localizedDescription() const;
    /// The same with the detail on a second line, for a terminal.
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

/// The error in a value of a notification's user information; absent when the value is something else.
[[nodiscard]] std::optional<Error> errorInValue(const QVariant& value);
