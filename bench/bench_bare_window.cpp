// A window and nothing else: what the application's start is measured against.
#include <QApplication>
#include <QLabel>

using namespace Qt::StringLiterals;

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QLabel window(u"Bonjour"_s);
    window.resize(640, 480);
    window.show();
    return QApplication::exec();
}
