#include "platform/Bundle.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

Bundle::Bundle(QString resourceFolder)
    : m_resourceFolder(std::move(resourceFolder))
{
}

Bundle Bundle::mainBundle()
{
    return Bundle(QCoreApplication::applicationDirPath() + "/../share/pelmora"_L1);
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
