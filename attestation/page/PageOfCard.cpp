#include "attestation/page/PageOfCard.h"

#include "attestation/page/DateFormatter.h"
#include "attestation/page/SchemeLogos.h"
#include "card/CardKeys.h"
#include "card/CardRecord.h"
#include "platform/IntegerValue.h"
#include "platform/ObjectText.h"

#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

qint64 integerOf(const PersonalRecord& record, QStringView key)
{
    return integerValue(record.text(key).value_or(QString()));
}

// At least that many characters, filled with zeros after the sign.
QString zeroPadded(qint64 number, int width)
{
    return QString::asprintf("%0*lld", width, static_cast<long long>(number));
}

QString fullName(const PersonalRecord& person)
{
    return objectText(person.text(CardKey::lastName)) + u' ' + objectText(person.text(CardKey::firstName));
}

// The funds of these two schemes (farming, railways) are told apart without their managing centre.
bool hasCentre(qint64 regime)
{
    return regime != 2 && regime != 4;
}

void fillHeader(AttestationPage& page, const CardRecord& record, PageOptions options, SchemeLogos& logos)
{
    // A scheme without a logo leaves the one that is there.
    if (auto logo = logos.logoNamed(zeroPadded(integerOf(record, CardKey::regimeCode), 2)))
        page.logo = std::move(logo);
    page.fundName = record.text(CardKey::fundCodeLibelle);
    page.NSS = record.text(CardKey::ssn);
    page.insuredName = fullName(record);
    page.showRightLabel = options.showRightLabel;
}

void fillOrganism(AttestationPage& page, const CardRecord& record)
{
    const qint64 regime = integerOf(record, CardKey::regimeCode);
    const qint64 fund = integerOf(record, CardKey::fundCode);
    QString organism = zeroPadded(regime, 2) + u' ' + zeroPadded(fund, 3);
    if (hasCentre(regime))
        organism += u' ' + zeroPadded(integerOf(record, CardKey::managementCenter), 4);
    page.organism = organism;
    page.gestionCode = zeroPadded(integerOf(record, CardKey::managementCode), 2);
}

QString birthdayText(const BeneficiaryRecord& beneficiary, DateFormatter& formatter)
{
    struct DateForm
    {
        QStringView key;
        QString stored;
        QString shown;
    };
    static const std::array forms{
        DateForm{CardKey::birthdayDate, u"ddMMyyyy"_s, u"dd/MM/yyyy"_s},
        DateForm{CardKey::birthdayDateRaw, u"yyMMdd"_s, u"dd/MM/yy"_s},
    };

    for (const DateForm& form : forms) {
        const std::optional<QString> stored = beneficiary.text(form.key);
        if (!stored)
            continue;
        formatter.setDateFormat(form.stored);
        const std::optional<QDate> date = formatter.dateFromString(*stored);
        formatter.setDateFormat(form.shown);
        return objectText(date ? std::optional(formatter.stringFromDate(*date)) : std::nullopt);
    }
    return u"???"_s;
}

BeneficiaryLine beneficiaryLine(const BeneficiaryRecord& beneficiary, DateFormatter& formatter)
{
    BeneficiaryLine line;
    line.insert(BeneficiaryLineKey::name, fullName(beneficiary));
    std::optional<QString> number = beneficiary.text(CardKey::certifiedSSN);
    if (!number)
        number = beneficiary.text(CardKey::ssn);
    if (number)
        line.insert(BeneficiaryLineKey::nss, *number);
    line.insert(BeneficiaryLineKey::birthdayDate, birthdayText(beneficiary, formatter));
    line.insert(BeneficiaryLineKey::rank, QString::number(integerOf(beneficiary, CardKey::rank)));
    return line;
}

void fillLines(AttestationPage& page, const CardRecord& record, DateFormatter& formatter)
{
    QList<BeneficiaryLine> lines;
    lines.reserve(record.beneficiaries().size());
    for (const BeneficiaryRecord& beneficiary : record.beneficiaries())
        lines.append(beneficiaryLine(beneficiary, formatter));
    page.lines = std::move(lines);
}

} // namespace

QLocale pageLocale()
{
    return {QLocale::French, QLocale::France};
}

AttestationPage pageOfCard(const CardRecord& record, PageOptions options, SchemeLogos& logos)
{
    AttestationPage page;
    DateFormatter formatter(pageLocale());
    fillPage(page, record, options, logos, formatter);
    return page;
}

void fillPage(AttestationPage& page, const CardRecord& record, PageOptions options, SchemeLogos& logos,
              DateFormatter& formatter)
{
    fillHeader(page, record, options, logos);
    fillOrganism(page, record);
    fillLines(page, record, formatter);
}
