#pragma once

#include "attestation/AttestationPage.h"

#include <QByteArray>

class PageFonts;

/// The page as a PDF/A-1b document of one page, 595 x 842 points, with the fonts that it uses; empty when it could not
/// be made. Nothing of the card but the page itself: no name, no number in the document's description. Main thread
/// only.
[[nodiscard]] QByteArray renderAttestationPdf(const AttestationPage& page, const PageFonts& fonts);
