#include "app/PageWindow.h"

#include "attestation/MVNewAttestationView.h"
#include "card/CardKeys.h"
#include "platform/ObjectText.h"

#include <QMessageBox>
#include <QScreen>
#include <QScrollArea>

using namespace Qt::StringLiterals;

PageWindow::PageWindow(SchemeLogos& logos, const PageFonts& fonts)
    : m_attestation(logos)
{
    setWindowTitle(u"Pelmora"_s);
    auto* scroller = new QScrollArea;
    scroller->setAlignment(Qt::AlignCenter);
    scroller->setWidget(MVNewAttestationView::viewOf(m_attestation, fonts).release());
    setCentralWidget(scroller);

    // The whole page with some air around it, where the screen has the room.
    constexpr QSize air(20, 20);
    const QSize wanted = attestationPageSize.toSize() + air;
    resize(wanted.boundedTo(screen()->availableSize() - air));
}

PageWindow::~PageWindow() = default;

void PageWindow::showCard(const std::expected<CardRecord, Error>& record)
{
    if (!record) {
        auto* alert = new QMessageBox(QMessageBox::Warning, windowTitle(), record.error().localizedDescription(),
                                      QMessageBox::Ok, this);
        alert->setAttribute(Qt::WA_DeleteOnClose);
        alert->open();
        return;
    }
    m_attestation.setVitale(*record);
    setWindowTitle(objectText(record->text(CardKey::firstName)) + u' ' + objectText(record->text(CardKey::lastName)));
}
