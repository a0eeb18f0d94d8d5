#pragma once

#include "service/CardCoverage.h"

#include <QHash>
#include <QStringList>

/// Labels of insurance schemes and of their funds.
///
/// A table file is UTF-8 text, one entry a line: "scheme;fund;label", the fund empty for the scheme itself. Blank lines
/// and lines that begin with "#" are comments.
class FundTable
{
public:
    /// Adds a table's entries; later ones replace earlier ones. Returns a sentence for each skipped line.
    [[nodiscard]] QStringList add(const QString& name, QByteArrayView content);

    /// The same for a file of at most 1 MiB.
    [[nodiscard]] QStringList addFile(const QString& path);

    /// The fund's label, else its scheme's.
    [[nodiscard]] std::optional<QString> label(const CardCoverage& coverage) const;

private:
    QHash<QString, QString> m_labels; // by scheme and fund joined
};
