#pragma once

#include "service/ReadingLibrary.h"

#include <QString>

/// Failures between the service and a card that are handled differently.
enum class CardFault
{
    ServiceDown,      // the PC/SC service does not run
    ServiceForbidden, // the PC/SC service refuses this account
    ServiceLost,      // the PC/SC service ended or restarted meanwhile: its handles are invalid
    ReaderUnknown,    // no reader has that name (any more)
    ReaderLost,       // the reader does not answer
    ReaderBusy,       // another program uses it exclusively
    CardAbsent,       // no card in the reader
    CardSilent,       // a card of another kind, or without a chip
    CardMute,         // the card does not answer when it is powered: a broken chip, or upside down
    CardGoneUnheard,  // the card was removed before it answered
    CardGone,         // the card was removed during the read
    CardSwapped,      // another card is in its place
    CardReset,        // another program reset the card during the read
    CardOfOtherKind,  // the card is of an unknown kind
    CardRefusal,      // the card refuses a command
    CardFileCut,      // a file is shorter or longer than the card says
    CardNonsense,     // the card's answer is invalid
    CardEndless,      // the card needs more commands or gives more bytes than any health card
    Unexpected        // any other PC/SC error
};

/// The fault of a PC/SC error code.
[[nodiscard]] CardFault cardFault(long pcscCode);

/// The result of a read with that fault.
[[nodiscard]] ReadResult readResult(CardFault fault);

/// A text in French for users in addition to that of the result; may be empty.
[[nodiscard]] QString hint(CardFault fault);

/// The fault and what to do about it, as a French sentence for the log, without data of a card.
[[nodiscard]] QString describe(CardFault fault);
