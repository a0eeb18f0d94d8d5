#include "platform/cups/PrintHelper.h"

#include "platform/cups/CupsServer.h"

#include <QDebug>
#include <QFile>

#include <cstdio>

#include <unistd.h>

int runPrintHelper()
{
    // Whoever asks gives up earlier, but may be gone: nobody would end this process then.
    constexpr unsigned longestLife = 10; // seconds
    alarm(longestLife);

    QFile input;
    QFile output;
    if (!input.open(stdin, QFile::ReadOnly) || !output.open(stdout, QFile::WriteOnly))
        return 1;
    const std::optional<PrintRequest> request = decodePrintRequest(input.readAll());
    if (!request) {
        qCritical("The print helper got no request.");
        return 1;
    }
    return output.write(encodePrintAnswer(askCupsServer(*request))) > 0 && output.flush() ? 0 : 1;
}
