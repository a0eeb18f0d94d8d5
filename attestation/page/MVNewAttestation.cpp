#include "attestation/page/MVNewAttestation.h"

#include "attestation/page/PageOfCard.h"
#include "support/MXLog.h"

#include <exception>
#include <utility>

MVNewAttestation::MVNewAttestation(const UserDefaults& settings, SchemeLogos& logos, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_logos(logos)
{
    internalInit();
}

MVNewAttestation::~MVNewAttestation() = default;

void MVNewAttestation::internalInit()
{
    m_dateFormatter = std::make_shared<DateFormatter>(pageLocale());
}

void MVNewAttestation::setVitale(const CardRecord& vitale)
{
    m_vitale = vitale;
    updateView();
}

void MVNewAttestation::setDateFormatter(std::shared_ptr<DateFormatter> dateFormatter)
{
    m_dateFormatter = std::move(dateFormatter);
}

void MVNewAttestation::updateView()
{
    try {
        fillPage(m_page, m_vitale, pageOptions(m_settings), m_logos, *m_dateFormatter);
    } catch (const std::exception& exception) {
        MXLog::logError("{}", exception.what());
    }
    Q_EMIT needsDisplay();
}
