#pragma once

#include <QList>
#include <QMarginsF>
#include <QSizeF>
#include <QString>
#include <QStringView>
#include <QVariantMap>

#include <memory>
#include <optional>

struct SchemeLogo;

/// Keys of a beneficiary line: the one spelling of each. Every value is a text.
namespace BeneficiaryLineKey {
inline const QString name = QStringLiteral("Name");
inline const QString nss = QStringLiteral("NSS");
inline const QString birthdayDate = QStringLiteral("BirthdayDate");
inline const QString rank = QStringLiteral("Rank");
} // namespace BeneficiaryLineKey

/// One beneficiary of the page; an absent key leaves its cell blank.
using BeneficiaryLine = QVariantMap;

/// The page's frame: A4 portrait, in points.
inline constexpr QSizeF attestationPageSize{595.0, 842.0};

/// The values that the attestation page shows; pageOfCard() makes them of a card record. Plain data: nothing is read or
/// computed while the page is drawn.
struct AttestationPage
{
    std::shared_ptr<const SchemeLogo> logo; ///< nothing is drawn without it
    std::optional<QString> fundName = QString();
    std::optional<QString> NSS = QString();         ///< the insured person's number as stored; drawn through formatNSS
    std::optional<QString> insuredName = QString(); ///< surname first
    bool showRightLabel = false;                    ///< whether the document's title is drawn
    std::optional<QString> organism;
    std::optional<QString> gestionCode;
    QList<BeneficiaryLine> lines;
    QMarginsF inset{8, 8, 8, 8}; ///< margins, in points
};
