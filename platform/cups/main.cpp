// pelmora-print: one PrintRequest on the standard input, one PrintAnswer on the standard output. It waits for the print
// server, and the program that asks may end it at any time.
#include "platform/CoreDumps.h"
#include "platform/cups/CupsServer.h"
#include "platform/files/FailedWrites.h"
#include "support/QtMessages.h"

#include <QDebug>
#include <QFile>

#include <cstdio>

#include <unistd.h>

int main()
{
    disableCoreDumps();
    sendQtMessagesToLog();
    ignoreSignalsOfFailedWrites();
    // The program that asks gives up earlier, but it may have ended.
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
