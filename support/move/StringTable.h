#pragma once

#include <QHash>
#include <QStringList>

class Bundle;

/// Texts in the user's language, found by their English text. Any thread.
class StringTable
{
public:
    /// The bundle's table "name" in the first available language of the list (such as "fr-FR"). Texts are English when
    /// there is no table or it cannot be read.
    [[nodiscard]] static StringTable load(const Bundle& bundle, const QString& name, const QStringList& languages);

    /// The translation, or the English text when there is none.
    [[nodiscard]] QString localizedString(QStringView english) const;

private:
    QHash<QString, QString> m_texts;
};
