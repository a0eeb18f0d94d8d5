#pragma once

#include "service/ReadingLibrary.h"

#include <QString>

/// What can go wrong between the service and a card, in so far as it makes a difference to somebody.
enum class CardFault
{
    ServiceDown,      // the system's service for readers does not run
    ServiceForbidden, // it runs, and refuses this account
    ServiceLost,      // it has ended or was started anew in the meantime: all that it gave is void
    ReaderUnknown,    // no reader bears that name (any more)
    ReaderLost,       // the reader is known, and does not answer
    ReaderBusy,       // another program has it for itself
    CardAbsent,       // the reader is empty
    CardSilent,       // the reader finds nothing that it could talk to: a card of another kind, or no chip at all
    CardMute,         // the card does not answer when it is powered: no working chip, or it stands upside down
    CardGoneUnheard,  // the card left before it answered anything
    CardGone,         // the card left in the middle
    CardSwapped,      // another card stands in its place
    CardReset,        // another program has reset the card in the middle
    CardOfOtherKind,  // the card answers, and is of no kind that is known
    CardRefusal,      // the card answers, and refuses
    CardFileCut,      // a file is shorter or longer than the card says
    CardNonsense,     // what the card answers is against all rules
    CardEndless,      // the card asks for more commands, or gives more bytes, than any card has use for
    Unexpected        // anything else that PC/SC may say
};

/// The fault that a PC/SC code, other than that of success, stands for.
[[nodiscard]] CardFault cardFault(long pcscCode);

/// The result of a read that ends with that fault.
[[nodiscard]] ReadResult readResult(CardFault fault);

/// What people are to know beside the text of the result, in French; empty where that text says it all.
[[nodiscard]] QString hint(CardFault fault);

/// The fault, and what to do about it, in a French sentence for the log. It tells nothing of a card's content.
[[nodiscard]] QString describe(CardFault fault);
