#include "app/RequestRefusal.h"

#include "app/FrontWindow.h"
#include "attestation/print/PrintDesk.h"

using namespace Qt::StringLiterals;

bool RequestRefusal::refuseWhile(CardOccupation::Any kinds)
{
    const CardOccupation::By occupied = m_occupation.firstOf(kinds);
    if (occupied == CardOccupation::By::Nothing)
        return false;
    m_front.refuse(CardOccupation::reason(occupied));
    if (occupied == CardOccupation::By::PrintDialog)
        m_printDesk.bringToFront();
    return true;
}

void RequestRefusal::refuseDrop()
{
    if (!refuseWhile(CardOccupation::anything))
        m_front.refuse(u"Fichier refusé\u00A0: fermez d’abord la fenêtre ouverte devant celle-ci."_s);
}
