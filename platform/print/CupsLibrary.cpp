#include "platform/print/CupsLibrary.h"

#include <QLibrary>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

// The version of the library's binary interface that the headers describe.
constexpr int interfaceVersion = 2;

std::optional<CupsLibrary> load()
{
    QLibrary library(u"cups"_s, interfaceVersion);
    bool isWhole = true;
    const auto resolve = [&library, &isWhole]<typename Function>(const char* name, Function& function) {
        function = reinterpret_cast<Function>(library.resolve(name));
        isWhole = isWhole && function != nullptr;
    };
    CupsLibrary cups;
    resolve("cupsAddOption", cups.cupsAddOption);
    resolve("cupsCancelDestJob", cups.cupsCancelDestJob);
    resolve("cupsCopyDestInfo", cups.cupsCopyDestInfo);
    resolve("cupsCreateDestJob", cups.cupsCreateDestJob);
    resolve("cupsDoRequest", cups.cupsDoRequest);
    resolve("cupsEncryption", cups.cupsEncryption);
    resolve("cupsFinishDestDocument", cups.cupsFinishDestDocument);
    resolve("cupsFreeDestInfo", cups.cupsFreeDestInfo);
    resolve("cupsFreeDests", cups.cupsFreeDests);
    resolve("cupsFreeOptions", cups.cupsFreeOptions);
    resolve("cupsGetDefault2", cups.cupsGetDefault2);
    resolve("cupsGetDest", cups.cupsGetDest);
    resolve("cupsGetDests2", cups.cupsGetDests2);
    resolve("cupsGetOption", cups.cupsGetOption);
    resolve("cupsLastError", cups.cupsLastError);
    resolve("cupsServer", cups.cupsServer);
    resolve("cupsSetPasswordCB2", cups.cupsSetPasswordCB2);
    resolve("cupsSetServer", cups.cupsSetServer);
    resolve("cupsStartDestDocument", cups.cupsStartDestDocument);
    resolve("cupsWriteRequestData", cups.cupsWriteRequestData);
    resolve("httpClose", cups.httpClose);
    resolve("httpConnect2", cups.httpConnect2);
    resolve("httpSetTimeout", cups.httpSetTimeout);
    resolve("ippAddStrings", cups.ippAddStrings);
    resolve("ippDelete", cups.ippDelete);
    resolve("ippErrorString", cups.ippErrorString);
    resolve("ippFirstAttribute", cups.ippFirstAttribute);
    resolve("ippGetName", cups.ippGetName);
    resolve("ippGetString", cups.ippGetString);
    resolve("ippNewRequest", cups.ippNewRequest);
    resolve("ippNextAttribute", cups.ippNextAttribute);
    resolve("ippPort", cups.ippPort);
    resolve("pwgMediaForLegacy", cups.pwgMediaForLegacy);
    resolve("pwgMediaForPPD", cups.pwgMediaForPPD);
    resolve("pwgMediaForPWG", cups.pwgMediaForPWG);
    return isWhole ? std::optional(cups) : std::nullopt;
}

} // namespace

const CupsLibrary* CupsLibrary::instance()
{
    static const std::optional<CupsLibrary> library = load();
    return library ? &*library : nullptr;
}
