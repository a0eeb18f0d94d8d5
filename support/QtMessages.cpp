#include "support/QtMessages.h"

#include "support/MXLog.h"

#include <QtGlobal>

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
        MXLog::logSevere("Qt: {}", message);
        return;
    }
}

} // namespace

void sendQtMessagesToLog()
{
    qInstallMessageHandler(logMessage);
}
