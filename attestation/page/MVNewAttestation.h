#pragma once

#include "attestation/page/AttestationPage.h"
#include "attestation/page/DateFormatter.h"
#include "card/CardRecord.h"

#include <QObject>

#include <memory>

class SchemeLogos;
class UserDefaults;

/// The attestation that a window shows: the page of its card, made afresh with the options of the settings each time a
/// card is set. It makes no view itself: MVNewAttestationView::viewOf gives the view of it. Main thread only.
class MVNewAttestation final : public QObject
{
    Q_OBJECT

public:
    /// An attestation without a record: an empty page. The settings and the logos must outlive it.
    MVNewAttestation(const UserDefaults& settings, SchemeLogos& logos, QObject* parent = nullptr);
    ~MVNewAttestation() override;

    /// The record being shown. Setting it is what rebuilds the page's values, the title option included.
    [[nodiscard]] const CardRecord& vitale() const { return m_vitale; }
    void setVitale(const CardRecord& vitale);

    /// The one formatter of every date, in French; its format is changed in place.
    [[nodiscard]] const std::shared_ptr<DateFormatter>& dateFormatter() const { return m_dateFormatter; }
    void setDateFormatter(std::shared_ptr<DateFormatter> dateFormatter);

    /// Fills the page from the record. A step that raises is logged, and what was set before it stays.
    void updateView();

    /// The page's values, as the last record left them.
    [[nodiscard]] const AttestationPage& page() const { return m_page; }

Q_SIGNALS:
    /// The page's values have changed: whoever shows them draws them again.
    void needsDisplay();

private:
    void internalInit();

    const UserDefaults& m_settings;
    SchemeLogos& m_logos;
    CardRecord m_vitale;
    std::shared_ptr<DateFormatter> m_dateFormatter;
    AttestationPage m_page;
};
