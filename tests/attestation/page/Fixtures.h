#pragma once

#include "attestation/page/AttestationPage.h"
#include "attestation/text/PageFonts.h"
#include "card/CardRecord.h"
#include "platform/Bundle.h"
#include "platform/UserDefaults.h"

#include <QList>
#include <QSize>
#include <QTemporaryDir>

#include <memory>
#include <utility>

/// The resources as the build stages them.
[[nodiscard]] Bundle stagedBundle();

/// The page's fonts; ends the test program when they cannot be loaded.
[[nodiscard]] PageFonts pageFonts();

/// Settings in a file of their own.
class TemporarySettings
{
public:
    void setShowsRightLabel(bool shows);
    [[nodiscard]] UserDefaults& store() { return m_store; }

private:
    QTemporaryDir m_folder;
    UserDefaults m_store{m_folder.filePath(QStringLiteral("Pelmora.conf"))};
};

/// An invented beneficiary with a number of 15 characters.
[[nodiscard]] BeneficiaryRecord person(const QString& lastName, const QString& firstName);

/// A card with only these texts.
[[nodiscard]] CardRecord cardWith(const QList<std::pair<RecordKey, QString>>& texts);

/// The card of SPECIMEN Marie: scheme 01, fund 751, centre 8801, code 10, and the given number of beneficiaries, named
/// SPECIMEN Numéro1, SPECIMEN Numéro2 and so on.
[[nodiscard]] CardRecord specimenCard(int beneficiaryCount);

/// A page with all its values, no logo, and the given number of lines like specimenCard's.
[[nodiscard]] AttestationPage specimenPage(int lineCount);

/// A logo of that natural size: one black rectangle that covers it.
[[nodiscard]] std::shared_ptr<SchemeLogo> blackLogo(QSize size);
