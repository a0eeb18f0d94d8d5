#include "platform/Bundle.h"

#include "platform/PropertyList.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>

#include <utility>

using namespace Qt::StringLiterals;

Bundle::Bundle(QString resourceFolder)
    : m_resourceFolder(std::move(resourceFolder))
    , m_information(std::make_shared<std::optional<QVariantMap>>())
{
}

Bundle Bundle::mainBundle()
{
    // Without "..": users see the path in the browser that shows the help.
    return Bundle(QDir::cleanPath(QCoreApplication::applicationDirPath() + "/../../share/pelmora"_L1));
}

std::optional<QString> Bundle::pathForResource(const QString& name, const QString& type) const
{
    // Names may come from a card: they must not leave the resource folder.
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
    // Languages come from the user's environment: they must not leave the resource folder.
    if (language.isEmpty() || language.contains(u'/'))
        return std::nullopt;
    return Bundle(m_resourceFolder + u'/' + language + ".lproj"_L1).pathForResource(name, type);
}

QString Bundle::pathForProgram(const QString& name) const
{
    return QDir::cleanPath(m_resourceFolder + "/../../libexec/pelmora/"_L1 + name);
}

QVariant Bundle::objectForInfoDictionaryKey(QStringView key) const
{
    if (!*m_information) {
        *m_information = dictionaryInFile(m_resourceFolder + "/Info.plist"_L1);
        if (!*m_information) {
            qCritical("The information dictionary cannot be read.");
            m_information->emplace();
        }
    }
    return (*m_information)->value(key.toString());
}
