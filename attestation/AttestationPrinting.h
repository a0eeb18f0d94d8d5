#pragma once

class CardRecord;
class PageFonts;
class QWidget;
class SchemeLogos;

/// Prints the record's attestation: a fresh page, whatever is on the screen, on one sheet. The print dialog opens on
/// the window that asks; one that is open there already comes to the front instead. Returns at once. Main thread only;
/// the logos, the fonts and the window must outlive the print.
void printAttestation(const CardRecord& record, SchemeLogos& logos, const PageFonts& fonts, QWidget* window);
