#pragma once

#include "platform/Bundle.h"
#include "platform/Error.h"

#include <QFont>
#include <QString>

#include <expected>
#include <map>
#include <utility>

/// How finely texts are laid out: units per point. Qt's fonts come in whole sizes only; at sixteen units a point every
/// advance is exact to a few thousandths, on every device and at every zoom.
inline constexpr int pageUnitsPerPoint = 16;

/// A font of the page. Its metrics are in points; the QFont is sized in page units.
struct PageFont
{
    QFont font;
    double size = 0;
    bool bold = false;
    double ascent = 0;
    double lineHeight = 0;
};

/// The page's one family, shipped with the program, in its regular and bold faces: never hinted, kerned or shaped, so
/// that a page is the same on every machine and its text can be read back from a PDF. Each font is made once.
/// Main thread only; needs a QGuiApplication.
class PageFonts
{
public:
    /// Hands the program's font files to Qt, once for the process. Fails when a file is missing or is no font.
    [[nodiscard]] static std::expected<PageFonts, Error> load(const Bundle& bundle);

    [[nodiscard]] const PageFont& systemFontOfSize(double size) const { return font(size, false); }
    [[nodiscard]] const PageFont& boldSystemFontOfSize(double size) const { return font(size, true); }

private:
    explicit PageFonts(QString family);
    [[nodiscard]] const PageFont& font(double size, bool bold) const;

    QString m_family;
    mutable std::map<std::pair<double, bool>, PageFont> m_fonts;
};
