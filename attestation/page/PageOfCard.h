#pragma once

#include "attestation/page/AttestationPage.h"
#include "attestation/page/PageOptions.h"

#include <QLocale>

class CardRecord;
class DateFormatter;
class SchemeLogos;

/// The language of the page's dates.
[[nodiscard]] QLocale pageLocale();

/// The page of a card: a function of the record, the options and the logos alone. Whoever shows, saves or prints a card
/// makes its page here. Main thread.
[[nodiscard]] AttestationPage pageOfCard(const CardRecord& record, PageOptions options, SchemeLogos& logos);

/// The same on a page that is there, step by step: what raises leaves what was filled before it. A scheme without a
/// logo leaves the one that is there. The formatter's format is changed in place.
void fillPage(AttestationPage& page, const CardRecord& record, PageOptions options, SchemeLogos& logos,
              DateFormatter& formatter);
