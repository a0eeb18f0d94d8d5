#include "support/move/StringTable.h"

#include "platform/Bundle.h"
#include "platform/PropertyList.h"

#include <QDebug>
#include <QFile>

using namespace Qt::StringLiterals;

namespace {

QVariantMap tableAt(const QString& path)
{
    QFile file(path);
    std::optional<QVariant> table;
    if (file.open(QIODevice::ReadOnly))
        table = parsePropertyList(file.read(maximumPropertyListSize + 1));
    if (table && table->typeId() == QMetaType::QVariantMap)
        return table->toMap();
    qCritical("A table of texts cannot be read.");
    return {};
}

} // namespace

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
        const QVariantMap texts = tableAt(*path);
        for (auto text = texts.cbegin(); text != texts.cend(); ++text) {
            if (text->typeId() == QMetaType::QString)
                table.m_texts.insert(text.key(), text->toString());
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
