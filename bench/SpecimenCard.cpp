#include "SpecimenCard.h"

#include "card/CardKeys.h"

using namespace Qt::StringLiterals;

namespace {

BeneficiaryRecord person(const QString& firstName, const QString& number, const QString& birthday)
{
    BeneficiaryRecord person;
    person.setText(CardKey::lastName, u"SPECIMEN"_s);
    person.setText(CardKey::firstName, firstName);
    person.setText(CardKey::ssn, number);
    person.setText(CardKey::birthdayDate, birthday);
    person.setText(CardKey::rank, u"1"_s);
    return person;
}

} // namespace

CardRecord specimenCard()
{
    CardRecord card;
    card.setText(CardKey::lastName, u"SPECIMEN"_s);
    card.setText(CardKey::firstName, u"Hélène"_s);
    card.setText(CardKey::ssn, u"285057511612381"_s);
    card.setText(CardKey::regimeCode, u"01"_s);
    card.setText(CardKey::fundCode, u"751"_s);
    card.setText(CardKey::managementCenter, u"8801"_s);
    card.setText(CardKey::managementCode, u"10"_s);
    card.setText(CardKey::fundCodeLibelle, u"Non spécifié"_s);
    card.setBeneficiaries({person(u"Hélène"_s, u"285057511612381"_s, u"14051985"_s),
                           person(u"François"_s, u"183116912345641"_s, u"02111983"_s),
                           person(u"Zoé"_s, u"285057511612381"_s, u"21032016"_s)});
    return card;
}
