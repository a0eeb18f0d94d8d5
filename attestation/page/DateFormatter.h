#pragma once

#include <QDate>
#include <QLocale>
#include <QString>

#include <optional>

/// Reads and writes dates by a pattern of "dd", "MM", "yy" or "yyyy" and other characters that stand for themselves.
/// The pattern is changed in place before each use. Reading is strict: as many digits as pattern letters, a date of the
/// calendar, nothing before or after. A two-digit year is one of this century.
class DateFormatter
{
public:
    explicit DateFormatter(const QLocale& locale);
    virtual ~DateFormatter() = default;
    Q_DISABLE_COPY_MOVE(DateFormatter)

    [[nodiscard]] const QLocale& locale() const { return m_locale; }
    [[nodiscard]] const QString& dateFormat() const { return m_dateFormat; }
    void setDateFormat(const QString& dateFormat) { m_dateFormat = dateFormat; }

    /// The date that the whole text stands for; absent when it does not parse.
    [[nodiscard]] virtual std::optional<QDate> dateFromString(QStringView text) const;
    [[nodiscard]] virtual QString stringFromDate(QDate date) const;

private:
    QLocale m_locale;
    QString m_dateFormat;
};
