#pragma once

#include "attestation/page/AttestationPage.h"
#include "attestation/page/PageInk.h"
#include "attestation/viewer/DocumentView.h"

#include <memory>
#include <optional>

class MVNewAttestation;
class PageFonts;

/// The attestation's page on the screen: always white with black ink, whatever the desktop's colours, and drawn by the
/// same routine as on paper and in a file, with a grey border that those do not get. A page is laid out when it is
/// first drawn, and not again until its values, its fonts or its frame change. Main thread only.
class MVNewAttestationView final : public DocumentView
{
    Q_OBJECT

public:
    explicit MVNewAttestationView(QWidget* parent = nullptr);

    /// The view of an attestation, with the page's frame: it shows the values that the attestation has, and each change
    /// of them. The fonts and the attestation must outlive it.
    [[nodiscard]] static std::unique_ptr<MVNewAttestationView> viewOf(const MVNewAttestation& attestation,
                                                                      const PageFonts& fonts);

    /// The origin is the top-left corner and y grows downwards.
    [[nodiscard]] bool isFlipped() const { return true; }
    /// The page covers its whole frame: nothing behind it shows.
    [[nodiscard]] bool isOpaque() const { return true; }

    /// What is shown. A view without fonts is a blank page.
    [[nodiscard]] const AttestationPage& page() const { return m_page; }
    void setPage(const AttestationPage& page);
    [[nodiscard]] const PageFonts* fonts() const { return m_fonts; }
    void setFonts(const PageFonts& fonts);

Q_SIGNALS:
    /// Another page is shown.
    void pageChanged();

protected:
    void drawRect(QPainter& painter) const override;

private:
    void internalInit();
    void redisplay(const AttestationPage& page);
    [[nodiscard]] const PageInk& ink() const;

    AttestationPage m_page;
    const PageFonts* m_fonts = nullptr;
    mutable std::optional<PageInk> m_ink; // absent until the page is drawn as it now is
};
