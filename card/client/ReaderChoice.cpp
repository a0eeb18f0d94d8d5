#include "card/client/ReaderChoice.h"

#include "card/PelmoraError.h"
#include "card/client/CardServiceKeys.h"
#include "card/wire/ReaderModel.h"

std::expected<QVariantMap, Error> readerChoice(QStringList names)
{
    if (names.isEmpty())
        return std::unexpected(PelmoraError::noReader());
    // When this choice has failed, the service chooses the accepted reader again, and the first other one
    // (service/ServiceCommands.cpp).
    const qsizetype accepted = names.indexOf(acceptedReader);
    if (accepted < 0)
        return std::unexpected(PelmoraError::badReader());
    names.swapItemsAt(0, accepted);
    return QVariantMap{{ReaderKey::vitale.toString(), names[0]},
                       {ReaderKey::cps.toString(), names.size() > 1 ? names[1] : names[0]}};
}
