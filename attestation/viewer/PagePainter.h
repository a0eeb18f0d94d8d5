#pragma once

#include "attestation/page/PageInk.h"

#include <QRawFont>

#include <map>
#include <memory>
#include <utility>

class QPainter;
struct GlyphRun;

/// Draws pages' ink on the screen, as the document writer does for paper and files. The fonts that it has drawn with
/// are kept. Main thread only; needs a QGuiApplication.
class PagePainter final
{
public:
    /// Draws the ink in its order through a painter whose unit is a point.
    void paint(QPainter& painter, const PageInk& ink) const;

private:
    friend class InkPainter;

    [[nodiscard]] const QRawFont& fontFor(const FontFace& face, const PageFont& font) const;

    /// A face as Qt draws it in one size; it reads the face's own bytes.
    struct ScreenFont
    {
        std::shared_ptr<const FontStack> owner;
        QRawFont font;
    };
    mutable std::map<std::pair<const FontFace*, double>, ScreenFont> m_fonts;
};
