#include "support/move/StringTable.h"

#include "platform/Bundle.h"
#include "platform/PropertyList.h"

#include <QDebug>

using namespace Qt::StringLiterals;

StringTable StringTable::load(const Bundle& bundle, const QString& name, const QStringList& languages)
{
    StringTable table;
    for (const QString& locale : languages) {
        const QString language = locale.section(u'-', 0, 0);
        if (language == "en"_L1)
            return table;
        const std::optional<QString> path = bundle.pathForLocalizedResource(name, u"strings"_s, language);
        if (!path)
            continue;
        const std::optional<QVariantMap> texts = dictionaryInFile(*path);
        if (!texts) {
            qCritical("A table of texts cannot be read.");
            return table;
        }
        for (const auto& [english, text] : texts->asKeyValueRange()) {
            if (text.typeId() == QMetaType::QString)
                table.m_texts.insert(english, text.toString());
        }
        return table;
    }
    return table;
}

QString StringTable::localizedString(QStringView english) const
{
    const QString key = english.toString();
    return m_texts.value(key, key);
}
