#include "platform/Bundle.h"
#include "platform/CoreDumps.h"
#include "platform/UserDefaults.h"
#include "platform/files/FailedWrites.h"
#include "platform/gui/ApplicationNames.h"
#include "platform/gui/FrenchTexts.h"
#include "support/QtMessages.h"
#include "update/UpdateRun.h"
#include "update/client/UpdateWords.h"

#include <QApplication>
#include <QIcon>
#include <QSocketNotifier>

#include <unistd.h>

using namespace Qt::StringLiterals;

// Started by the application, which keeps the other end of standard input open while it runs.
int main(int argc, char* argv[])
{
    disableCoreDumps();
    sendQtMessagesToLog();
    ignoreSignalsOfFailedWrites();

    const QApplication application(argc, argv);
    nameApplication(u"" PELMORA_VERSION ""_s);
    installFrenchTexts();
    const Bundle bundle = Bundle::mainBundle();
    if (const std::optional<QString> icon = bundle.pathForResource(u"PelmoraIcon"_s, u"svg"_s))
        QGuiApplication::setWindowIcon(QIcon(*icon));

    UpdateRun run(UpdateConfiguration::fromBundle(bundle),
                  std::make_unique<UserDefaults>(UserDefaults::standardFilePath()));
    // Queued: the check may finish before the event loop starts.
    QObject::connect(&run, &UpdateRun::finished, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    const QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &run, [&run] {
        char request = 0;
        if (read(STDIN_FILENO, &request, 1) == 1)
            run.checkForUpdates();
        else
            QCoreApplication::quit();
    });

    if (QCoreApplication::arguments().contains(byItselfOption))
        run.checkByItself();
    else
        run.checkForUpdates();
    return QApplication::exec();
}
