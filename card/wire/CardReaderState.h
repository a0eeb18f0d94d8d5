#pragma once

#include "card/wire/ServiceVocabulary.h"

#include <QCborMap>

#include <array>
#include <optional>

/// What the card reader holds, as the service tells it without being asked.
enum class CardReaderState
{
    NoService,   // the PC/SC service does not answer
    NoReader,    // no reader is connected
    OtherReader, // only readers of other models than the accepted one
    Empty,       // an accepted reader without a card
    Card,
    MuteCard // a card that does not answer when it is powered
};

struct CardReaderStateRow
{
    CardReaderState state = CardReaderState::NoService;
    QLatin1StringView word;
};

inline constexpr std::array cardReaderStates{
    CardReaderStateRow{CardReaderState::NoService, ServiceWord::noService},
    CardReaderStateRow{CardReaderState::NoReader, ServiceWord::noReader},
    CardReaderStateRow{CardReaderState::OtherReader, ServiceWord::otherReader},
    CardReaderStateRow{CardReaderState::Empty, ServiceWord::emptyReader},
    CardReaderStateRow{CardReaderState::Card, ServiceWord::cardPresent},
    CardReaderStateRow{CardReaderState::MuteCard, ServiceWord::muteCard},
};

/// The body of the unsolicited message about that state.
[[nodiscard]] QCborMap readerMessage(CardReaderState state);

/// The state that an unsolicited message tells; absent in messages about something else and for unknown words.
[[nodiscard]] std::optional<CardReaderState> readerStateOf(const QCborMap& message);
