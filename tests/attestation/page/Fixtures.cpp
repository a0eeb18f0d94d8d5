#include "tests/attestation/page/Fixtures.h"

#include "attestation/page/SchemeLogos.h"
#include "card/CardKeys.h"
#include "prefs/settings/MVSettings.h"

#include <QtGlobal>

using namespace Qt::StringLiterals;

Bundle stagedBundle()
{
    return Bundle(QStringLiteral(PELMORA_STAGE_SHARE));
}

PageFonts pageFonts()
{
    std::expected<PageFonts, Error> fonts = PageFonts::load(stagedBundle());
    if (!fonts)
        qFatal("%s", qPrintable(fonts.error().localizedDescription()));
    return std::move(*fonts);
}

void TemporarySettings::setShowsRightLabel(bool shows)
{
    MVSettings::setPreferencesWithBooleanValue(m_store, Settings::showRightLabelPrintOption, shows);
}

BeneficiaryRecord person(const QString& lastName, const QString& firstName)
{
    BeneficiaryRecord person;
    person.setText(CardKey::lastName, lastName);
    person.setText(CardKey::firstName, firstName);
    person.setText(CardKey::ssn, u"185057800608491"_s);
    person.setText(CardKey::birthdayDate, u"15031980"_s);
    person.setText(CardKey::rank, u"1"_s);
    return person;
}

CardRecord cardWith(const QList<std::pair<RecordKey, QString>>& texts)
{
    CardRecord card;
    for (const auto& [key, value] : texts)
        card.setText(key, value);
    return card;
}

CardRecord specimenCard(int beneficiaryCount)
{
    QList<BeneficiaryRecord> beneficiaries;
    for (int i = 1; i <= beneficiaryCount; ++i)
        beneficiaries.append(person(u"SPECIMEN"_s, u"Numéro%1"_s.arg(i)));

    CardRecord card;
    card.setText(CardKey::lastName, u"SPECIMEN"_s);
    card.setText(CardKey::firstName, u"Marie"_s);
    card.setText(CardKey::ssn, u"269062B12345634"_s);
    card.setText(CardKey::regimeCode, u"1"_s);
    card.setText(CardKey::fundCode, u"751"_s);
    card.setText(CardKey::managementCenter, u"8801"_s);
    card.setText(CardKey::managementCode, u"10"_s);
    card.setText(CardKey::fundCodeLibelle, u"CPAM de Paris"_s);
    card.setBeneficiaries(beneficiaries);
    return card;
}

AttestationPage specimenPage(int lineCount)
{
    AttestationPage page;
    page.fundName = u"CPAM de Paris"_s;
    page.NSS = u"269062B12345634"_s;
    page.insuredName = u"SPECIMEN Marie"_s;
    page.organism = u"01 751 8801"_s;
    page.gestionCode = u"10"_s;
    for (int i = 1; i <= lineCount; ++i) {
        page.lines.append(BeneficiaryLine{
            {BeneficiaryLineKey::name, u"SPECIMEN Numéro%1"_s.arg(i)},
            {BeneficiaryLineKey::nss, u"185057800608491"_s},
            {BeneficiaryLineKey::birthdayDate, u"15/03/1980"_s},
            {BeneficiaryLineKey::rank, u"1"_s},
        });
    }
    return page;
}

std::shared_ptr<SchemeLogo> blackLogo(QSize size)
{
    const QString file = u"%1 %2 1 Régime d’essai\n0 0 0 rg\n0 0 m\n%1 0 l\n%1 %2 l\n0 %2 l\nh\nf\n"_s;
    const QByteArray bytes = file.arg(size.width()).arg(size.height()).toUtf8();
    return std::make_shared<SchemeLogo>(SchemeLogo{u"00"_s, VectorImage::parsed(bytes)});
}
