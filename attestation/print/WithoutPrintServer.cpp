#include "attestation/print/WithoutPrintServer.h"

#include <QLibrary>

using namespace Qt::StringLiterals;

void WithoutPrintServer::setServer(const char* server)
{
    // The library that Qt's own plug-in brings along. It is not linked: each start of the program would wait for it.
    const auto set = reinterpret_cast<void (*)(const char*)>(QLibrary::resolve(u"cups"_s, 2, "cupsSetServer"));
    if (set != nullptr)
        set(server);
}
