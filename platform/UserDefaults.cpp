#include "platform/UserDefaults.h"

#include "platform/IntegerValue.h"

#include <QMap>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace {
// An INI file gives a list of one text back as a text, and an empty list as nothing: arrays are written item by item.
constexpr QLatin1StringView arrayItem{"value"};
constexpr QLatin1StringView arraySize{"/size"};
} // namespace

UserDefaults::UserDefaults(const QString& filePath)
    : m_settings(filePath, QSettings::IniFormat)
{
}

QString UserDefaults::standardFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/MORVEL/Pelmora.conf"_L1;
}

void UserDefaults::registerDefaults(const QVariantMap& defaults)
{
    m_registered.insert(defaults);
}

QVariant UserDefaults::object(const QString& key) const
{
    if (m_settings.contains(key + arraySize))
        return arrayObject(key);
    const QVariant stored = m_settings.value(key);
    return stored.isValid() ? stored : m_registered.value(key);
}

QVariantList UserDefaults::arrayObject(const QString& key) const
{
    // Reading a group moves the store's current one, which no caller sees.
    auto& settings = const_cast<QSettings&>(m_settings);
    settings.beginGroup(key);
    // The items that are there, and not as many as the file says: that may be any number.
    const qint64 size = integerValue(settings.value(arraySize.sliced(1)).toString());
    QMap<qint64, QVariant> items;
    for (const QString& number : settings.childGroups()) {
        const qint64 index = integerValue(number);
        if (index >= 1 && index <= size)
            items.insert(index, settings.value(number + u'/' + arrayItem));
    }
    settings.endGroup();
    return items.values();
}

void UserDefaults::setObject(const QString& key, const QVariant& value)
{
    m_settings.remove(key);
    if (value.typeId() != QMetaType::QVariantList) {
        m_settings.setValue(key, value);
        return;
    }
    const QVariantList items = value.toList();
    const auto size = static_cast<int>(items.size());
    m_settings.beginWriteArray(key, size);
    for (int index = 0; index < size; ++index) {
        m_settings.setArrayIndex(index);
        m_settings.setValue(arrayItem, items.at(index));
    }
    m_settings.endArray();
}

void UserDefaults::remove(const QString& key)
{
    m_settings.remove(key);
}

void UserDefaults::synchronize()
{
    m_settings.sync();
}
