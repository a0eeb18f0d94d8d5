#include "support/move/MoveAtLaunch.h"

#include <QApplication>
#include <QLabel>

using namespace Qt::StringLiterals;

// An application that only asks at its launch whether to move. Then its window shows the program's path and arguments.
int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    QGuiApplication::setApplicationDisplayName(u"Pelmora"_s);
    if (moveToApplicationsFolderIfNecessary() == MoveOutcome::Ends)
        return 0;
    const QStringList words =
        QStringList(QCoreApplication::applicationFilePath()) + QCoreApplication::arguments().mid(1);
    QLabel window(words.join(u'\n'));
    window.setWindowTitle(u"Pelmora"_s);
    window.show();
    return QApplication::exec();
}
