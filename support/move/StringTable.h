#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

class Bundle;

/// Texts in the user's language, found by their English wording. Usable on any thread.
class StringTable
{
public:
    /// The bundle's table "name" in the first of the languages (as "fr-FR", the preferred one first) that there is.
    /// What nobody has translated is English, and so is a table that cannot be read.
    [[nodiscard]] static StringTable load(const Bundle& bundle, const QString& name, const QStringList& languages);

    /// The text for its English wording, which is the text itself where the table has no other.
    [[nodiscard]] QString localizedString(QStringView english) const;

private:
    QHash<QString, QString> m_texts;
};
