#include "card/PelmoraError.h"

#include "card/ReadResult.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace {

Error pelmoraError(int code, std::optional<QString> description = std::nullopt)
{
    return {PelmoraError::domain, code, std::move(description)};
}

} // namespace

Error PelmoraError::generalError()
{
    return pelmoraError(-10);
}

Error PelmoraError::internalError()
{
    return pelmoraError(-11);
}

Error PelmoraError::writeError()
{
    return pelmoraError(-12,
                        u"Une erreur est survenue pendant l'enregistrement de l'attestation. Réessayez l'opération."_s);
}

Error PelmoraError::noReader()
{
    return pelmoraError(-20, u"Aucun lecteur de carte n'a été trouvé. Vérifiez les branchements."_s);
}

Error PelmoraError::badReader()
{
    return pelmoraError(-21, u"Le lecteur fournit pas MORVEL n'a pas été trouvé. Vérifiez les branchements."_s);
}

Error PelmoraError::readerError()
{
    return pelmoraError(-22, u"Erreur lecteur. Vérifiez les branchements du lecteur."_s);
}

Error PelmoraError::vitaleNotPresent()
{
    return pelmoraError(-30, u"La carte vitale n'est pas dans le lecteur."_s);
}

Error PelmoraError::vitaleReadError()
{
    return pelmoraError(
        -31, u"Erreur de lecture de la carte Vitale.\nVérifiez le branchement du lecteur ou la présence de la "
             "carte Vitale dans le lecteur ou le sens d'insertion de la carte Vitale."_s);
}

Error PelmoraError::vitaleNoBen()
{
    return pelmoraError(-40, u"La carte Vitale ne comporte aucun bénéficiaire."_s);
}

QString PelmoraError::helpTopic(const Error& error)
{
    return error.domain() == domain ? u"erreur%1"_s.arg(error.code()) : QString();
}

Error PelmoraError::errorForCode(qint64 resultCode)
{
    switch (static_cast<ReadResult>(resultCode)) {
    case ReadResult::CardAbsent:
        return vitaleNotPresent();
    case ReadResult::ReaderFault:
        return readerError();
    case ReadResult::CardChanged:
    case ReadResult::ReadError:
    case ReadResult::CardMute:
        return vitaleReadError();
    default:
        return generalError();
    }
}
