#include "support/QtMessages.h"

#include "support/MXLog.h"

#include <QtGlobal>

#include <cstdio>

namespace {

void logMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message)
{
    switch (type) {
    case QtDebugMsg:
    case QtInfoMsg:
    case QtWarningMsg:
        MXLog::logDebug("Qt: {}", message);
        return;
    case QtCriticalMsg:
        MXLog::logError("Qt: {}", message);
        return;
    case QtFatalMsg:
        // The program ends here: also told on standard error.
        MXLog::logSevere("Qt: {}", message);
        static_cast<void>(std::fprintf(stderr, "%s\n", qUtf8Printable(message)));
        return;
    }
}

} // namespace

void sendQtMessagesToLog()
{
    qInstallMessageHandler(logMessage);
}
