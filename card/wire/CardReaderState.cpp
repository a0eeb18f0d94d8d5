#include "card/wire/CardReaderState.h"

#include <algorithm>

QCborMap readerMessage(CardReaderState state)
{
    const auto* row = std::ranges::find(cardReaderStates, state, &CardReaderStateRow::state);
    return {{ServiceWord::event, ServiceWord::readerEvent}, {ServiceWord::state, row->word}};
}

std::optional<CardReaderState> readerStateOf(const QCborMap& message)
{
    if (message.value(ServiceWord::event).toString() != ServiceWord::readerEvent)
        return std::nullopt;
    const QString word = message.value(ServiceWord::state).toString();
    const auto* row = std::ranges::find_if(cardReaderStates, [&word](const auto& known) { return known.word == word; });
    return row == cardReaderStates.end() ? std::nullopt : std::optional(row->state);
}
