#include "attestation/page/PageOnSheet.h"

#include <algorithm>

PageOnSheet PageOnSheet::on(QSizeF sheet)
{
    const QSizeF page = attestationPageSize;
    const double scale = std::min({1.0, sheet.width() / page.width(), sheet.height() / page.height()});
    const QSizeF air = sheet - page * scale;
    return {scale, QPointF(air.width(), air.height()) / 2};
}
