#pragma once

#include <QtGlobal>

/// Why a card could not be read: the numbers in the channel's messages.
enum class ReadResult : qint64
{
    Unusable = 0,     // the card's data are not enough for an attestation
    CardAbsent = 11,  // no card, or none that answers
    ReaderFault = 13, // the reader or the PC/SC service was lost
    CardChanged = 15, // the card was removed or replaced during the read
    ReadError = 17,   // the card refuses its data, or they are damaged
    CardMute = 25     // the card does not answer, or is upside down
};
