#include "app/DesktopRequests.h"

#include "app/FrontWindow.h"
#include "app/windows/CardPanel.h"
#include "app/windows/DiagnosisWindow.h"
#include "app/windows/MainWindow.h"
#include "card/client/ServiceEnvironment.h"
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

void DesktopRequests::showHelp(const QString& element)
{
    m_front.window().panel().setNotice(QString());
    const std::optional<QString> page = m_bundle.pathForResource(u"Help"_s, u"html"_s);
    if (!page)
        return;
    QUrl address = QUrl::fromLocalFile(*page);
    if (!element.isEmpty())
        address.setFragment(element);
    Workspace::openUrl(address);
}

void DesktopRequests::showDiagnosis(QWidget& window) const
{
    QStringList environment;
    for (const std::string& variable : serviceEnvironment())
        environment.append(QString::fromLocal8Bit(variable));
    DiagnosisWindow::showOver(window, {m_bundle.pathForProgram(u"com.morvel.lvit"_s), u"--diagnose"_s}, environment);
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
