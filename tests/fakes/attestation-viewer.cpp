// attestation-viewer CARD.xml: the viewer without the rest of the application. It shows the page of a card. Each line
// of standard input is the path of another card file, which replaces the previous one in the same window.
#include "app/models/CardFile.h"
#include "attestation/page/SchemeLogos.h"
#include "attestation/print/PrintDesk.h"
#include "attestation/text/PageFonts.h"
#include "attestation/viewer/MVAttestationWindowController.h"
#include "platform/Bundle.h"
#include "platform/UserDefaults.h"

#include <QApplication>
#include <QSocketNotifier>
#include <QTextStream>

#include <cstdio>

#include <unistd.h>

namespace {

void show(MVAttestationWindowController& viewer, const QString& path)
{
    const std::expected<CardRecord, Error> record = loadCardFile(path);
    if (!record)
        qFatal("%s: %s", qPrintable(path), qPrintable(record.error().localizedDescription()));
    viewer.setVitale(*record);
    viewer.showWindow(nullptr);
}

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    UserDefaults settings(UserDefaults::standardFilePath());
    const Bundle bundle(QStringLiteral(PELMORA_STAGE_SHARE));
    const auto fonts = PageFonts::load(bundle);
    if (!fonts)
        qFatal("%s", qPrintable(fonts.error().localizedDescription()));
    SchemeLogos logos(bundle);
    PrintDesk printDesk(settings, logos, *fonts, bundle.pathForProgram(QStringLiteral("pelmora-print")));
    MVAttestationWindowController viewer(settings, logos, *fonts, printDesk);
    show(viewer, QApplication::arguments().value(1));

    const QSocketNotifier standardInput(STDIN_FILENO, QSocketNotifier::Read);
    QTextStream lines(stdin);
    QObject::connect(&standardInput, &QSocketNotifier::activated, &viewer, [&lines, &viewer] {
        const QString path = lines.readLine();
        if (path.isNull())
            QCoreApplication::quit();
        else
            show(viewer, path);
    });
    return QApplication::exec();
}
