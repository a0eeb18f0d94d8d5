#include "app/DesktopRequests.h"

#include "app/FrontWindow.h"
#include "app/windows/CardPanel.h"
#include "app/windows/MainWindow.h"
#include "platform/Bundle.h"
#include "platform/gui/Workspace.h"
#include "support/MXUtils.h"

#include <QUrl>

using namespace Qt::StringLiterals;

void DesktopRequests::sendComment()
{
    const QVariant contact = m_bundle.objectForInfoDictionaryKey(u"MVContactMail");
    if (contact.typeId() != QMetaType::QString) {
        m_front.refuse(u"Aucune adresse n’est connue pour les suggestions."_s);
        return;
    }
    m_front.window().panel().setNotice(QString());
    Workspace::openUrl(
        QUrl(u"mailto:"_s + contact.toString() + u"?subject=Suggestion%20pour%20le%20logiciel%20PELMORA"_s));
}

void DesktopRequests::showHelp()
{
    m_front.window().panel().setNotice(QString());
    if (const std::optional<QString> page = m_bundle.pathForResource(u"Help"_s, u"html"_s))
        Workspace::openFile(*page);
}

void DesktopRequests::openFolder(const QString& path)
{
    m_front.window().panel().setNotice(QString());
    if (MXUtils::checkFolderAtPath(path, true))
        Workspace::openFile(path);
}

void DesktopRequests::openFile(const QString& path)
{
    m_front.window().panel().setNotice(QString());
    Workspace::openFile(path);
}
