#include "attestation/page/MVNewAttestation.h"

#include "attestation/page/SchemeLogos.h"
#include "card/CardKeys.h"
#include "platform/IntegerValue.h"
#include "platform/ObjectText.h"
#include "prefs/settings/MVSettings.h"
#include "support/MXLog.h"

#include <array>
#include <exception>
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

} // namespace

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
    m_dateFormatter = std::make_shared<DateFormatter>(QLocale(QLocale::French, QLocale::France));
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
        fillHeader();
        fillOrganism();
        fillLines();
    } catch (const std::exception& exception) {
        MXLog::logError("{}", exception.what());
    }
    Q_EMIT needsDisplay();
}

void MVNewAttestation::fillHeader()
{
    // A scheme without a logo leaves the one that is there.
    if (const auto logo = m_logos.logoNamed(zeroPadded(integerOf(m_vitale, CardKey::regimeCode), 2)))
        m_page.logo = *logo;
    m_page.fundName = m_vitale.text(CardKey::fundCodeLibelle);
    m_page.NSS = m_vitale.text(CardKey::ssn);
    m_page.insuredName = fullName(m_vitale);
    m_page.showRightLabel = MVSettings::booleanPreferencesForKey(m_settings, Settings::showRightLabelPrintOption);
}

void MVNewAttestation::fillOrganism()
{
    const qint64 regime = integerOf(m_vitale, CardKey::regimeCode);
    const qint64 fund = integerOf(m_vitale, CardKey::fundCode);
    QString organism = zeroPadded(regime, 2) + u' ' + zeroPadded(fund, 3);
    if (hasCentre(regime))
        organism += u' ' + zeroPadded(integerOf(m_vitale, CardKey::managementCenter), 4);
    m_page.organism = organism;
    m_page.gestionCode = zeroPadded(integerOf(m_vitale, CardKey::managementCode), 2);
}

void MVNewAttestation::fillLines()
{
    QList<BeneficiaryLine> lines;
    lines.reserve(m_vitale.beneficiaries().size());
    for (const BeneficiaryRecord& beneficiary : m_vitale.beneficiaries())
        lines.append(beneficiaryLine(beneficiary));
    m_page.lines = std::move(lines);
}

BeneficiaryLine MVNewAttestation::beneficiaryLine(const BeneficiaryRecord& beneficiary)
{
    BeneficiaryLine line;
    line.insert(BeneficiaryLineKey::name, fullName(beneficiary));
    std::optional<QString> number = beneficiary.text(CardKey::certifiedSSN);
    if (!number)
        number = beneficiary.text(CardKey::ssn);
    if (number)
        line.insert(BeneficiaryLineKey::nss, *number);
    line.insert(BeneficiaryLineKey::birthdayDate, birthdayText(beneficiary));
    line.insert(BeneficiaryLineKey::rank, QString::number(integerOf(beneficiary, CardKey::rank)));
    return line;
}

QString MVNewAttestation::birthdayText(const BeneficiaryRecord& beneficiary)
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
        m_dateFormatter->setDateFormat(form.stored);
        const std::optional<QDate> date = m_dateFormatter->dateFromString(*stored);
        m_dateFormatter->setDateFormat(form.shown);
        return objectText(date ? std::optional(m_dateFormatter->stringFromDate(*date)) : std::nullopt);
    }
    return u"???"_s;
}
