#pragma once

#include "card/wire/CardReaderState.h"

#include <QStringView>

/// Why requests for a card wait when nothing more is known.
inline constexpr QStringView readerNotReady{u"Le lecteur de cartes n’est pas prêt. Appuyez sur Lire."};

/// The reader's state and what to do next, as French sentences. Without a state, what to do with a card.
[[nodiscard]] QString readerHint(std::optional<CardReaderState> state);

/// Why tiles that need the card service are disabled.
[[nodiscard]] QString disabledTileText(std::optional<CardReaderState> state);
