#pragma once

#include "platform/Error.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <expected>

/// Where a card came from.
struct CardSource
{
    enum class Kind
    {
        File,
        StandardInput,
        Reader
    };

    Kind kind = Kind::Reader;
    QString path; ///< of a file

    /// Begins a sentence about a card that is not the reader's; empty for that one.
    [[nodiscard]] QString prefix() const;
};

/// A path for JSON, which has texts only: a byte that is not UTF-8 becomes U+FFFD.
[[nodiscard]] QString jsonPath(const QString& path);

/// What a run without a window did, as the JSON document that docs/json.md describes. Main thread.
class CardResults
{
public:
    explicit CardResults(const QString& command);

    /// What was done with one card, or why it was not.
    void add(const CardSource& source, const std::expected<QJsonObject, Error>& outcome);
    /// Nothing can be done with any card.
    void setFailure(const Error& error);

    [[nodiscard]] QByteArray document() const;

private:
    QJsonObject m_document;
    QJsonArray m_results;
};
