#include "app/CardOccupation.h"

#include "app/models/ReadWorkflow.h"
#include "attestation/print/PrintDesk.h"
#include "platform/files/FileWorker.h"

using namespace Qt::StringLiterals;

const CardOccupation::Any CardOccupation::anything = By::Reading | By::PrintDialog | By::Writing;

CardOccupation::By CardOccupation::firstOf(Any kinds) const
{
    for (const By kind : {By::Reading, By::PrintDialog, By::Writing}) {
        if (kinds.testFlag(kind) && is(kind))
            return kind;
    }
    return By::Nothing;
}

QString CardOccupation::reason(By kind)
{
    switch (kind) {
    case By::Reading:
        return u"Demande refusée pendant la lecture d’une carte."_s;
    case By::PrintDialog:
        return u"Demande refusée pendant l’impression\u00A0: confirmez ou annulez d’abord celle-ci."_s;
    case By::Writing:
        return u"Un enregistrement est en cours."_s;
    case By::Nothing:
        break;
    }
    return {};
}

bool CardOccupation::is(By kind) const
{
    switch (kind) {
    case By::Reading:
        return m_reading.isUnderWay();
    case By::PrintDialog:
        return m_printDesk.isAsking();
    case By::Writing:
        return FileWorker::shared().isBusy();
    case By::Nothing:
        break;
    }
    return false;
}
