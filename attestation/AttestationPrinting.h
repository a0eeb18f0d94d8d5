#pragma once

class AlertQueue;
class CardRecord;
class PageFonts;
class QWidget;
class SchemeLogos;

/// Prints the record's attestation: a fresh page, whatever is on the screen, on one sheet. The print dialog opens on
/// the window that asks; one that is open there already comes to the front instead. What fails is told by the window's
/// alerts. Returns at once. Main thread only; the logos, the fonts, the alerts and the window must outlive the print.
void printAttestation(const CardRecord& record, SchemeLogos& logos, const PageFonts& fonts, AlertQueue& alerts,
                      QWidget* window);
