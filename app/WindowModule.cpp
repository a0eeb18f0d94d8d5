#include "app/WindowModule.h"

#include "app/WindowRun.h"
#include "support/QtMessages.h"

int pelmoraRunWindow(const CommandLine& command, int argc, char** argv)
{
    // The module has a logger of its own, whose level the start-up sets: Qt's messages are to heed that one.
    sendQtMessagesToLog();
    return runWindow(command, argc, argv);
}
