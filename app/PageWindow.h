#pragma once

#include "attestation/MVNewAttestation.h"
#include "card/CardRecord.h"
#include "platform/Error.h"

#include <QMainWindow>

#include <expected>

class PageFonts;
class SchemeLogos;

/// A window on one attestation page. The logos and the fonts must outlive it. Main thread only.
class PageWindow final : public QMainWindow
{
    Q_OBJECT

public:
    PageWindow(SchemeLogos& logos, const PageFonts& fonts);
    ~PageWindow() override;

    /// Shows the card, or says why there is none.
    void showCard(const std::expected<CardRecord, Error>& record);

private:
    MVNewAttestation m_attestation;
};
