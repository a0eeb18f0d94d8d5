#include "attestation/AttestationPrinting.h"

#include "attestation/MVNewAttestation.h"
#include "attestation/PrintOperation.h"

#include <QWidget>

void printAttestation(const CardRecord& record, SchemeLogos& logos, const PageFonts& fonts, AlertQueue& alerts,
                      QWidget* window)
{
    for (PrintOperation* operation : window->findChildren<PrintOperation*>(Qt::FindDirectChildrenOnly)) {
        if (operation->isAsking()) {
            operation->raiseDialog();
            return;
        }
    }
    MVNewAttestation attestation(logos);
    attestation.setVitale(record);
    // It deletes itself when it is done, and goes with the window otherwise.
    (new PrintOperation(attestation.page(), fonts, alerts, window))->run();
}
