#pragma once

#include <cups/cups.h>
#include <cups/pwg.h>

/// What is used of libcups, under its own names. The library is loaded when a printer is first asked for: it brings a
/// dozen others along, which every start of the program would wait for.
struct CupsLibrary
{
    /// The library, loaded once for the process; null where it is not installed. Any thread.
    [[nodiscard]] static const CupsLibrary* instance();

    decltype(&::cupsAddOption) cupsAddOption = nullptr;
    decltype(&::cupsCancelDestJob) cupsCancelDestJob = nullptr;
    decltype(&::cupsCopyDestInfo) cupsCopyDestInfo = nullptr;
    decltype(&::cupsCreateDestJob) cupsCreateDestJob = nullptr;
    decltype(&::cupsDoRequest) cupsDoRequest = nullptr;
    decltype(&::cupsEncryption) cupsEncryption = nullptr;
    decltype(&::cupsFinishDestDocument) cupsFinishDestDocument = nullptr;
    decltype(&::cupsFreeDestInfo) cupsFreeDestInfo = nullptr;
    decltype(&::cupsFreeDests) cupsFreeDests = nullptr;
    decltype(&::cupsFreeOptions) cupsFreeOptions = nullptr;
    decltype(&::cupsGetDefault2) cupsGetDefault2 = nullptr;
    decltype(&::cupsGetDest) cupsGetDest = nullptr;
    decltype(&::cupsGetDests2) cupsGetDests2 = nullptr;
    decltype(&::cupsGetOption) cupsGetOption = nullptr;
    decltype(&::cupsLastError) cupsLastError = nullptr;
    decltype(&::cupsServer) cupsServer = nullptr;
    decltype(&::cupsSetPasswordCB2) cupsSetPasswordCB2 = nullptr;
    decltype(&::cupsSetServer) cupsSetServer = nullptr;
    decltype(&::cupsStartDestDocument) cupsStartDestDocument = nullptr;
    decltype(&::cupsWriteRequestData) cupsWriteRequestData = nullptr;
    decltype(&::httpClose) httpClose = nullptr;
    decltype(&::httpConnect2) httpConnect2 = nullptr;
    decltype(&::httpSetTimeout) httpSetTimeout = nullptr;
    decltype(&::ippAddStrings) ippAddStrings = nullptr;
    decltype(&::ippDelete) ippDelete = nullptr;
    decltype(&::ippErrorString) ippErrorString = nullptr;
    decltype(&::ippFirstAttribute) ippFirstAttribute = nullptr;
    decltype(&::ippGetName) ippGetName = nullptr;
    decltype(&::ippGetString) ippGetString = nullptr;
    decltype(&::ippNewRequest) ippNewRequest = nullptr;
    decltype(&::ippNextAttribute) ippNextAttribute = nullptr;
    decltype(&::ippPort) ippPort = nullptr;
    decltype(&::pwgMediaForLegacy) pwgMediaForLegacy = nullptr;
    decltype(&::pwgMediaForPPD) pwgMediaForPPD = nullptr;
    decltype(&::pwgMediaForPWG) pwgMediaForPWG = nullptr;
};
