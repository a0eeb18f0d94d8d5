#include "attestation/MVNewAttestationView.h"

#include "attestation/AccessiblePage.h"
#include "attestation/AttestationLayout.h"
#include "attestation/MVNewAttestation.h"
#include "attestation/PagePainter.h"
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
    view->setDocumentSize(view->size());
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
}

void MVNewAttestationView::redisplay(const AttestationPage& page)
{
    setPage(page);
    update();
    Q_EMIT pageChanged();
}

// The whole page each time, whatever part of it is asked for.
void MVNewAttestationView::drawRect(QPainter& painter) const
{
    if (m_fonts == nullptr) {
        painter.fillRect(QRectF(QPointF(), documentSize()), Qt::white);
        return;
    }
    painter.scale(1.0 / pageUnitsPerPoint, 1.0 / pageUnitsPerPoint);
    PagePainter::paint(painter, AttestationLayout::drawRect(m_page, documentSize(), *m_fonts), PageMedium::Screen);
}
