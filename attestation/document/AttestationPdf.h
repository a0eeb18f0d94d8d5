#pragma once

#include "attestation/page/AttestationPage.h"
#include "attestation/page/PageOnSheet.h"
#include "platform/Error.h"

#include <QByteArray>
#include <QDateTime>

#include <expected>

class PageFonts;

/// The page as a document of one sheet, on which it lies as PageOnSheet says: PDF/A-1a and PDF/UA-1, tagged, with the
/// fonts that it uses. The same page and time give the same bytes. Nothing of the card but the page itself: no name, no
/// number in the document's description. Fails, with a text in French, when the page's logo is damaged or memory is
/// short. Main thread only.
[[nodiscard]] std::expected<QByteArray, Error>
renderAttestationPdf(const AttestationPage& page, const PageFonts& fonts, const PaperSheet& sheet = {},
                     const QDateTime& time = QDateTime::currentDateTime());
