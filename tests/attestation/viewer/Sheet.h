#pragma once

#include "attestation/viewer/DocumentView.h"

#include <QPainter>

/// A white document of a size.
class Sheet final : public DocumentView
{
public:
    explicit Sheet(QSizeF size) { setDocumentSize(size); }

protected:
    void drawRect(QPainter& painter) const override { painter.fillRect(QRectF(QPointF(), documentSize()), Qt::white); }
};
