#include "service/embedded/CardDocument.h"

#include "service/embedded/CardDecoder.h"
#include "service/embedded/CardElements.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// The beneficiary whose coverage is shown, found in the same way as by the application.
const CardTree* insuredPerson(const std::vector<const CardTree*>& beneficiaries)
{
    const auto found = std::ranges::find_if(beneficiaries, [](const CardTree* beneficiary) {
        return beneficiary->textAt(CardElements::quality) == insuredQuality;
    });
    return found == beneficiaries.cend() ? beneficiaries.front() : *found;
}

QStringList missingElements(const CardTree& beneficiary, bool isInsured)
{
    QStringList missing;
    for (const CardElement& element : CardElements::beneficiaryElements) {
        const bool isNeeded = element.need == CardNeed::Everyone || (isInsured && element.need == CardNeed::Insured);
        if (isNeeded && beneficiary.textAt(element.path).isEmpty())
            missing.append(element.path.toString());
    }
    // Only the insured person needs a date of birth. An incomplete date is an element without a text.
    if (isInsured && beneficiary.elements(CardElements::birth).empty())
        missing.append(CardElements::birthDate.toString());
    return missing;
}

/// Why the insured person is ambiguous; absent when there is exactly one, or when the card has no qualities.
std::optional<CardGap> doubtIn(const CardTree& document)
{
    qsizetype known = 0;
    QStringList insured; // beneficiaries' numbers
    const std::vector<const CardTree*> beneficiaries = document.elements(CardElements::beneficiary);
    for (std::size_t index = 0; index < beneficiaries.size(); ++index) {
        const QString quality = beneficiaries[index]->textAt(CardElements::quality);
        known += quality.isEmpty() ? 0 : 1;
        if (quality == insuredQuality)
            insured.append(QString::number(index + 1));
    }
    if (known == 0 || insured.size() == 1)
        return std::nullopt;
    return CardGap{CardGap::Kind::Damaged,
                   insured.isEmpty() ? u"aucun bénéficiaire n’est l’assuré"_s
                                     : u"plusieurs assurés : bénéficiaires %1"_s.arg(insured.join(u", "_s)),
                   {}};
}

/// What is missing for an attestation.
std::optional<CardGap> gapIn(const CardTree& document, bool knowsBeneficiaries)
{
    const std::vector<const CardTree*> beneficiaries = document.elements(CardElements::beneficiary);
    if (beneficiaries.empty()) {
        // The application has its own error for a card without beneficiaries.
        if (knowsBeneficiaries)
            return std::nullopt;
        return CardGap{
            CardGap::Kind::Missing, u"la carte ne montre aucun bénéficiaire"_s, {CardElements::beneficiary.toString()}};
    }
    CardGap gap{CardGap::Kind::Missing, {}, {}};
    QStringList sentences;
    const CardTree* insured = insuredPerson(beneficiaries);
    for (const CardTree* beneficiary : beneficiaries) {
        const QStringList missing = missingElements(*beneficiary, beneficiary == insured);
        if (missing.isEmpty())
            continue;
        const auto number = std::ranges::find(beneficiaries, beneficiary) - beneficiaries.begin() + 1;
        const QString who = beneficiary == insured ? u"à l’assuré"_s : u"au bénéficiaire %1"_s.arg(number);
        sentences.append(u"%1 : %2"_s.arg(who, missing.join(", "_L1)));
        gap.missing += missing;
    }
    if (sentences.isEmpty())
        return std::nullopt;
    gap.missing.removeDuplicates();
    gap.explanation = u"il manque %1"_s.arg(sentences.join(" ; "_L1));
    return gap;
}

} // namespace

std::expected<QString, CardGap> cardDocument(const CardMap& map, const CardContent& content)
{
    const std::expected<CardDecoder, CardGap> decoder = CardDecoder::parse(map, content);
    if (!decoder)
        return std::unexpected(decoder.error());
    const std::expected<CardTree, CardGap> document = decoder->document();
    if (!document)
        return std::unexpected(document.error());
    if (const std::optional<CardGap> doubt = doubtIn(*document))
        return std::unexpected(*doubt);
    if (const std::optional<CardGap> gap = gapIn(*document, decoder->knowsBeneficiaries()))
        return std::unexpected(*gap);
    return document->toXml();
}
