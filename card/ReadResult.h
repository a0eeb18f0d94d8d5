#pragma once

#include <QtGlobal>

/// Why a card could not be read, with the numbers that go over the channel.
enum class ReadResult : qint64
{
    Unusable = 0,     // the card was read, but has no data that an attestation can be made of
    CardAbsent = 11,  // no card, or not one that answers
    ReaderFault = 13, // the reader, or the system's service for readers, is lost
    CardChanged = 15, // the card left, or another came, during the read
    ReadError = 17,   // the card refuses its data, or they are damaged
    CardMute = 25     // the card does not answer, or stands upside down
};
