#pragma once

#include "attestation/page/AttestationPage.h"
#include "attestation/page/PageInk.h"
#include "attestation/viewer/DocumentView.h"
#include "attestation/viewer/PagePainter.h"

#include <memory>
#include <optional>

class MVNewAttestation;
class PageFonts;

/// The attestation's page on the screen: black on white, drawn from the same ink as on paper and in a file, plus a grey
/// border. It is laid out when it is first painted after its values, fonts or frame have changed. Main thread.
class MVNewAttestationView final : public DocumentView
{
    Q_OBJECT

public:
    explicit MVNewAttestationView(QWidget* parent = nullptr);

    /// A view that shows the attestation and follows its changes. Fonts and attestation must outlive it.
    [[nodiscard]] static std::unique_ptr<MVNewAttestationView> viewOf(const MVNewAttestation& attestation,
                                                                      const PageFonts& fonts);

    /// The origin is at the top left, and y grows downwards.
    [[nodiscard]] bool isFlipped() const { return true; }
    /// The page covers its whole frame.
    [[nodiscard]] bool isOpaque() const { return true; }

    /// The shown page. A view without fonts is blank.
    [[nodiscard]] const AttestationPage& page() const { return m_page; }
    void setPage(const AttestationPage& page);
    [[nodiscard]] const PageFonts* fonts() const { return m_fonts; }
    void setFonts(const PageFonts& fonts);

Q_SIGNALS:
    void pageChanged();

protected:
    void drawRect(QPainter& painter) const override;

private:
    void internalInit();
    void redisplay(const AttestationPage& page);
    [[nodiscard]] const PageInk& ink() const;

    AttestationPage m_page;
    const PageFonts* m_fonts = nullptr;
    PagePainter m_painter;
    mutable std::optional<PageInk> m_ink; // absent until the current page is drawn
};
