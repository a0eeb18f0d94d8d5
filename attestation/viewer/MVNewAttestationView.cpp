#include "attestation/viewer/MVNewAttestationView.h"

#include "attestation/page/AttestationLayout.h"
#include "attestation/page/MVNewAttestation.h"
#include "attestation/viewer/AccessiblePage.h"
#include "ui_NewAttestation.h"

#include <QPainter>

MVNewAttestationView::MVNewAttestationView(QWidget* parent)
    : DocumentView(parent)
{
    internalInit();
}

std::unique_ptr<MVNewAttestationView> MVNewAttestationView::viewOf(const MVNewAttestation& attestation,
                                                                   const PageFonts& fonts)
{
    auto view = std::make_unique<MVNewAttestationView>();
    Ui::NewAttestation().setupUi(view.get());
    view->resize(attestationPageSize.toSize());
    view->setDocumentSize(attestationPageSize);
    view->setFonts(fonts);
    view->redisplay(attestation.page());
    connect(&attestation, &MVNewAttestation::needsDisplay, view.get(),
            [view = view.get(), &attestation] { view->redisplay(attestation.page()); });
    return view;
}

void MVNewAttestationView::internalInit()
{
    m_page = AttestationPage();
    AccessiblePage::install();
    connect(this, &DocumentView::documentSizeChanged, this, [this] { m_ink.reset(); });
}

void MVNewAttestationView::setPage(const AttestationPage& page)
{
    m_page = page;
    m_ink.reset();
}

void MVNewAttestationView::setFonts(const PageFonts& fonts)
{
    m_fonts = &fonts;
    m_ink.reset();
}

const PageInk& MVNewAttestationView::ink() const
{
    if (!m_ink)
        m_ink = AttestationLayout::drawRect(m_page, documentSize(), *m_fonts);
    return *m_ink;
}

void MVNewAttestationView::redisplay(const AttestationPage& page)
{
    setPage(page);
    update();
    Q_EMIT pageChanged();
}

// Always draws the whole page.
void MVNewAttestationView::drawRect(QPainter& painter) const
{
    if (m_fonts == nullptr) {
        painter.fillRect(QRectF(QPointF(), documentSize()), Qt::white);
        return;
    }
    m_painter.paint(painter, ink());
}
