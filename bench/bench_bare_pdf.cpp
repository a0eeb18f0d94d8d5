// The bare whole program: bench_bare_pdf RESOURCES OUTPUT.pdf writes the specimen card's page and does nothing else.
// The lower bound for "pelmora --save".
#include "BarePage.h"

#include <QFile>
#include <QGuiApplication>
#include <QSvgRenderer>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fputs("usage: bench_bare_pdf RESOURCES OUTPUT.pdf\n", stderr);
        return 2;
    }

    const QString& resources = arguments[1];
    const BareFonts fonts = loadBareFonts(resources);
    QSvgRenderer logo(QStringLiteral(PELMORA_LOGOS "/01.svg"));
    const QByteArray document = barePdf(fonts, logo);
    QFile file(arguments[2]);
    return file.open(QIODevice::WriteOnly) && file.write(document) == document.size() ? 0 : 1;
}
