#pragma once

#include "attestation/page/AttestationPage.h"

#include <QByteArray>
#include <QPageLayout>

class PageFonts;

/// A sheet of A4 paper, upright: the page's own.
[[nodiscard]] QPageLayout attestationSheet();

/// The page as a PDF/A-1b document of one sheet, on which it lies as PageOnSheet says, with the fonts that it uses;
/// empty when it could not be made. Of the sheet, only the paper and its orientation count. Nothing of the card but the
/// page itself: no name, no number in the document's description. Main thread only.
[[nodiscard]] QByteArray renderAttestationPdf(const AttestationPage& page, const PageFonts& fonts,
                                              const QPageLayout& sheet = attestationSheet());
