#include "attestation/MVNewAttestationView.h"

#include "attestation/AttestationLayout.h"
#include "attestation/MVNewAttestation.h"
#include "attestation/PagePainter.h"
#include "ui_NewAttestation.h"

#include <QPainter>

using namespace Qt::StringLiterals;

MVNewAttestationView::MVNewAttestationView(QWidget* parent)
    : QWidget(parent)
{
    internalInit();
}

std::unique_ptr<MVNewAttestationView> MVNewAttestationView::viewOf(const MVNewAttestation& attestation,
                                                                   const PageFonts& fonts)
{
    auto view = std::make_unique<MVNewAttestationView>();
    Ui::NewAttestation().setupUi(view.get());
    view->setFonts(fonts);
    view->setPage(attestation.page());
    connect(&attestation, &MVNewAttestation::needsDisplay, view.get(), [view = view.get(), &attestation] {
        view->setPage(attestation.page());
        view->update();
    });
    return view;
}

void MVNewAttestationView::internalInit()
{
    m_page = AttestationPage();
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QSize MVNewAttestationView::sizeHint() const
{
    return attestationPageSize.toSize();
}

void MVNewAttestationView::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    drawRect(painter);
}

// The whole page each time, whatever part of it is asked for.
void MVNewAttestationView::drawRect(QPainter& painter) const
{
    if (m_fonts == nullptr) {
        painter.fillRect(rect(), Qt::white);
        return;
    }
    painter.scale(1.0 / pageUnitsPerPoint, 1.0 / pageUnitsPerPoint);
    PagePainter::paint(painter, AttestationLayout::drawRect(m_page, size(), *m_fonts), PageMedium::Screen);
}
