// A window with a greeting and nothing else: the lower bound for the application's start. With "--fixed" its size is
// given, so that it is shown before any font is looked up. With "--empty" it has no greeting either.
#include <QApplication>
#include <QLabel>

using namespace Qt::StringLiterals;

int main(int argc, char** argv)
{
    constexpr int margin = 200;
    const QApplication application(argc, argv);
    const QStringList options = QCoreApplication::arguments();
    QLabel window(options.contains("--empty"_L1) ? QString() : u"Bonjour"_s);
    if (options.contains("--fixed"_L1) || options.contains("--empty"_L1))
        window.resize(2 * margin, 2 * margin);
    else
        window.setMargin(margin);
    window.show();
    return QApplication::exec();
}
