#include "platform/gui/ApplicationNames.h"

#include <QApplication>

using namespace Qt::StringLiterals;

void nameApplication(const QString& version)
{
    QCoreApplication::setApplicationName(u"Pelmora"_s);
    QCoreApplication::setApplicationVersion(version);
    QGuiApplication::setDesktopFileName(u"com.morvel.Pelmora"_s);
    // The status item or the desktop's task list bring the windows back.
    QApplication::setQuitOnLastWindowClosed(false);
}
