#pragma once

#include "attestation/AttestationPage.h"

#include <QWidget>

#include <memory>

class MVNewAttestation;
class PageFonts;

/// The attestation's page on the screen: always white with black ink, whatever the desktop's colours, and drawn by the
/// same routine as on paper and in a file, with a grey border that those do not get. Main thread only.
class MVNewAttestationView final : public QWidget
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
    /// The page covers the whole view: nothing behind it shows.
    [[nodiscard]] bool isOpaque() const { return true; }

    /// What is shown. A view without fonts is a blank page.
    [[nodiscard]] const AttestationPage& page() const { return m_page; }
    void setPage(const AttestationPage& page) { m_page = page; }
    void setFonts(const PageFonts& fonts) { m_fonts = &fonts; }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void internalInit();
    void drawRect(QPainter& painter) const;

    AttestationPage m_page;
    const PageFonts* m_fonts = nullptr;
};
