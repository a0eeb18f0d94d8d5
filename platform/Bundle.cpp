#include "platform/Bundle.h"

#include "platform/PropertyList.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

QVariantMap informationIn(const QString& path)
{
    QFile file(path);
    std::optional<QVariant> list;
    if (file.open(QIODevice::ReadOnly))
        list = parsePropertyList(file.read(maximumPropertyListSize + 1));
    if (list && list->typeId() == QMetaType::QVariantMap)
        return list->toMap();
    qCritical("The information dictionary cannot be read.");
    return {};
}

} // namespace

Bundle::Bundle(QString resourceFolder)
    : m_resourceFolder(std::move(resourceFolder))
    , m_information(std::make_shared<std::optional<QVariantMap>>())
{
}

Bundle Bundle::mainBundle()
{
    // A clean path: users see it in the browser that shows the help.
    return Bundle(QDir::cleanPath(QCoreApplication::applicationDirPath() + "/../../share/pelmora"_L1));
}

std::optional<QString> Bundle::pathForResource(const QString& name, const QString& type) const
{
    // Names may come from a card: none may lead out of the resource folder.
    if (name.isEmpty() || name.contains(u'/'))
        return std::nullopt;
    QString path = m_resourceFolder + u'/' + name + u'.' + type;
    if (!QFileInfo(path).isFile())
        return std::nullopt;
    return path;
}

std::optional<QString> Bundle::pathForLocalizedResource(const QString& name, const QString& type,
                                                        const QString& language) const
{
    // Languages come from the user's environment: none may lead out of the resource folder either.
    if (language.isEmpty() || language.contains(u'/'))
        return std::nullopt;
    return Bundle(m_resourceFolder + u'/' + language + ".lproj"_L1).pathForResource(name, type);
}

QVariant Bundle::objectForInfoDictionaryKey(QStringView key) const
{
    if (!*m_information)
        *m_information = informationIn(m_resourceFolder + "/Info.plist"_L1);
    return (*m_information)->value(key.toString());
}
