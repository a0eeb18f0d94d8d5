#include "app/models/ReaderHint.h"

#include "card/wire/ReaderModel.h"

using namespace Qt::StringLiterals;

QString readerHint(std::optional<CardReaderState> state)
{
    switch (state.value_or(CardReaderState::Empty)) {
    case CardReaderState::NoService:
        return u"Le service des lecteurs (pcscd) ne répond pas\u00A0: faites-le démarrer."_s;
    case CardReaderState::NoReader:
        return u"Aucun lecteur – branchez-le."_s;
    case CardReaderState::OtherReader:
        return u"Ce lecteur ne convient pas\u00A0: branchez un «\u202F%1\u202F»."_s.arg(acceptedReader);
    case CardReaderState::Empty:
        return u"Insérez une carte, puis appuyez sur Lire."_s;
    case CardReaderState::Card:
        return u"Carte présente – appuyez sur Lire."_s;
    case CardReaderState::MuteCard:
        return u"Carte illisible\u00A0: retournez-la, la puce vers le lecteur."_s;
    }
    return {};
}

QString disabledTileText(std::optional<CardReaderState> state)
{
    const bool isReaderMissing = state == CardReaderState::NoService || state == CardReaderState::NoReader ||
                                 state == CardReaderState::OtherReader;
    return isReaderMissing ? readerHint(state) : readerNotReady.toString();
}
