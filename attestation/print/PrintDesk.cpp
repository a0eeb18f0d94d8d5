#include "attestation/print/PrintDesk.h"

#include "attestation/page/PageOfCard.h"
#include "attestation/print/PrintOperation.h"

#include <QWidget>

#include <utility>

PrintDesk::PrintDesk(const UserDefaults& settings, SchemeLogos& logos, const PageFonts& fonts, QString printHelper)
    : m_settings(settings)
    , m_logos(logos)
    , m_fonts(fonts)
    , m_printHelper(std::move(printHelper))
{
}

PrintDesk::~PrintDesk() = default;

void PrintDesk::setPermission(std::function<bool()> permission)
{
    m_permission = std::move(permission);
}

bool PrintDesk::mayPrint() const
{
    return !m_permission || m_permission();
}

void PrintDesk::print(const CardRecord& record, AlertQueue& alerts, QWidget& window)
{
    if (isAsking()) {
        bringToFront();
        return;
    }
    AttestationPage page = pageOfCard(record, pageOptions(m_settings), m_logos);
    // It deletes itself when it is done, and goes with the window otherwise.
    m_operation = new PrintOperation(std::move(page), m_fonts, m_printHelper, alerts, &window);
    m_operation->run();
}

bool PrintDesk::isAsking() const
{
    return m_operation && m_operation->isAsking();
}

void PrintDesk::bringToFront() const
{
    if (isAsking())
        m_operation->bringToFront();
}
