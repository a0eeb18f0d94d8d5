#include "attestation/page/PageOfCard.h"
#include "attestation/page/SchemeLogos.h"
#include "card/CardKeys.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

BeneficiaryRecord personWith(RecordKey key, const QString& value)
{
    BeneficiaryRecord record;
    record.setText(key, value);
    return record;
}

CardRecord cardOf(const QList<BeneficiaryRecord>& beneficiaries)
{
    CardRecord card;
    card.setBeneficiaries(beneficiaries);
    return card;
}

} // namespace

class tst_PageOfCard : public TestCase
{
    Q_OBJECT

private:
    SchemeLogos m_logos{stagedBundle()};

    AttestationPage pageOf(const CardRecord& card) { return pageOfCard(card, {}, m_logos); }

    BeneficiaryLine lineOf(const BeneficiaryRecord& person) { return pageOf(cardOf({person})).lines.value(0); }

private Q_SLOTS:
    void theTitleIsShownWhenTheOptionIsOn()
    {
        QVERIFY(pageOfCard(specimenCard(1), {.showRightLabel = true}, m_logos).showRightLabel);
        QVERIFY(!pageOfCard(specimenCard(1), {.showRightLabel = false}, m_logos).showRightLabel);
    }

    void aPageHasNoValuesOfThePreviousOne()
    {
        QVERIFY(pageOf(cardWith({{CardKey::regimeCode, u"2"_s}})).logo);
        const AttestationPage page = pageOf(CardRecord());
        QVERIFY(!page.logo);
        QVERIFY(!page.fundName);
        QVERIFY(page.lines.isEmpty());
    }

    void theHeaderComesFromTheTopOfTheRecord()
    {
        const AttestationPage page = pageOf(specimenCard(1));
        QVERIFY(page.logo);
        QCOMPARE(page.fundName, u"CPAM de Paris"_s);
        QCOMPARE(page.NSS, u"269062B12345634"_s);
        QCOMPARE(page.insuredName, u"SPECIMEN Marie"_s);
        QCOMPARE(page.organism, u"01 751 8801"_s);
        QCOMPARE(page.gestionCode, u"10"_s);
    }

    void theInsuredNumberIsTheTopLevelOneAndNotYetFormatted()
    {
        CardRecord card = cardOf({personWith(CardKey::certifiedSSN, u"185057800608491"_s)});
        card.setText(CardKey::ssn, u" 2 69 "_s);
        QCOMPARE(pageOf(card).NSS, u" 2 69 "_s);
    }

    void missingValuesAreShownByPlaceholders()
    {
        const AttestationPage page = pageOf(cardOf({BeneficiaryRecord()}));
        QVERIFY(!page.fundName);
        QVERIFY(!page.NSS);
        QCOMPARE(page.insuredName, u"(null) (null)"_s);
        QCOMPARE(page.organism, u"00 000 0000"_s);
        QCOMPARE(page.gestionCode, u"00"_s);
        const BeneficiaryLine expected{
            {u"Name"_s, u"(null) (null)"_s}, {u"BirthdayDate"_s, u"???"_s}, {u"Rank"_s, u"0"_s}};
        QCOMPARE(page.lines, QList{expected});
    }

    void oneMissingNamePartIsShownAsMissing()
    {
        QCOMPARE(pageOf(cardWith({{CardKey::lastName, u"SPECIMEN"_s}})).insuredName, u"SPECIMEN (null)"_s);
        QCOMPARE(pageOf(cardWith({{CardKey::firstName, u"Marie"_s}})).insuredName, u"(null) Marie"_s);
        QCOMPARE(pageOf(cardWith({{CardKey::lastName, u""_s}, {CardKey::firstName, u"Marie"_s}})).insuredName,
                 u" Marie"_s);
    }

    void theOrganismHasItsCentreExceptForSchemes2And4_data()
    {
        QTest::addColumn<QString>("regime");
        QTest::addColumn<QString>("fund");
        QTest::addColumn<QString>("centre");
        QTest::addColumn<QString>("organism");
        QTest::newRow("1") << u"1"_s << u"751"_s << u"8801"_s << u"01 751 8801"_s;
        QTest::newRow("01") << u"01"_s << u"001"_s << u"0001"_s << u"01 001 0001"_s;
        QTest::newRow("2") << u"2"_s << u"5"_s << u"8801"_s << u"02 005"_s;
        QTest::newRow("3") << u"3"_s << u"56"_s << u"123"_s << u"03 056 0123"_s;
        QTest::newRow("4") << u"4"_s << u"56"_s << u"123"_s << u"04 056"_s;
        QTest::newRow("95") << u"95"_s << u"1234"_s << u"12345"_s << u"95 1234 12345"_s;
        QTest::newRow("not numbers") << u"x"_s << u""_s << u"12A"_s << u"00 000 0012"_s;
        QTest::newRow("negative") << u"-1"_s << u"-5"_s << u"-7"_s << u"-1 -05 -007"_s;
    }
    void theOrganismHasItsCentreExceptForSchemes2And4()
    {
        QFETCH(QString, regime);
        QFETCH(QString, fund);
        QFETCH(QString, centre);
        QFETCH(QString, organism);
        QCOMPARE(
            pageOf(cardWith(
                       {{CardKey::regimeCode, regime}, {CardKey::fundCode, fund}, {CardKey::managementCenter, centre}}))
                .organism,
            organism);
    }

    void theManagementCodeHasTwoDigits()
    {
        QCOMPARE(pageOf(cardWith({{CardKey::managementCode, u"5"_s}})).gestionCode, u"05"_s);
        QCOMPARE(pageOf(cardWith({{CardKey::managementCode, u"123"_s}})).gestionCode, u"123"_s);
        QCOMPARE(pageOf(cardWith({{CardKey::managementCode, u"A1"_s}})).gestionCode, u"00"_s);
    }

    void theLogoIsThatOfTheScheme()
    {
        QCOMPARE(pageOf(cardWith({{CardKey::regimeCode, u"1"_s}})).logo, m_logos.logoNamed(u"01"_s));
        QCOMPARE(pageOf(cardWith({{CardKey::regimeCode, u"091"_s}})).logo, m_logos.logoNamed(u"91"_s));
        QVERIFY(!pageOf(cardWith({{CardKey::regimeCode, u"55"_s}})).logo);
    }

    void theCertifiedNumberIsPreferred()
    {
        BeneficiaryRecord both = personWith(CardKey::ssn, u"1"_s);
        both.setText(CardKey::certifiedSSN, u"2"_s);
        QCOMPARE(lineOf(both).value(u"NSS"_s), u"2"_s);
        QCOMPARE(lineOf(personWith(CardKey::ssn, u"1"_s)).value(u"NSS"_s), u"1"_s);
        both.setText(CardKey::certifiedSSN, u""_s);
        QCOMPARE(lineOf(both).value(u"NSS"_s), u""_s);
        QVERIFY(!lineOf(BeneficiaryRecord()).contains(u"NSS"_s));
    }

    void theBirthDateIsShownAsTheCardGivesIt_data()
    {
        QTest::addColumn<std::optional<QString>>("date");
        QTest::addColumn<std::optional<QString>>("raw");
        QTest::addColumn<QString>("shown");
        const std::optional<QString> none;
        QTest::newRow("full date") << std::optional(u"15031980"_s) << none << u"15/03/1980"_s;
        QTest::newRow("date on the card") << none << std::optional(u"800315"_s) << u"15/03/80"_s;
        QTest::newRow("both") << std::optional(u"15031980"_s) << std::optional(u"810416"_s) << u"15/03/1980"_s;
        QTest::newRow("neither") << none << none << u"???"_s;
        QTest::newRow("full date that does not parse")
            << std::optional(u"00001980"_s) << std::optional(u"800315"_s) << u"(null)"_s;
        QTest::newRow("empty full date") << std::optional(u""_s) << std::optional(u"800315"_s) << u"(null)"_s;
        QTest::newRow("date on the card that does not parse") << none << std::optional(u"800000"_s) << u"(null)"_s;
        QTest::newRow("29 February 2000, short") << none << std::optional(u"000229"_s) << u"29/02/00"_s;
    }
    void theBirthDateIsShownAsTheCardGivesIt()
    {
        QFETCH(std::optional<QString>, date);
        QFETCH(std::optional<QString>, raw);
        QFETCH(QString, shown);
        BeneficiaryRecord record;
        if (date)
            record.setText(CardKey::birthdayDate, *date);
        if (raw)
            record.setText(CardKey::birthdayDateRaw, *raw);
        QCOMPARE(lineOf(record).value(u"BirthdayDate"_s), shown);
    }

    void theRankIsShownAsAnInteger()
    {
        QCOMPARE(lineOf(personWith(CardKey::rank, u"1"_s)).value(u"Rank"_s), u"1"_s);
        QCOMPARE(lineOf(personWith(CardKey::rank, u"02"_s)).value(u"Rank"_s), u"2"_s);
        QCOMPARE(lineOf(personWith(CardKey::rank, u"x"_s)).value(u"Rank"_s), u"0"_s);
    }

    void beneficiariesKeepTheirOrderAndTheirDuplicates()
    {
        const AttestationPage page = pageOf(cardOf(
            {person(u"SPECIMEN"_s, u"Zoé"_s), person(u"SPECIMEN"_s, u"Anne"_s), person(u"SPECIMEN"_s, u"Zoé"_s)}));
        QStringList names;
        for (const BeneficiaryLine& line : page.lines)
            names.append(line.value(u"Name"_s).toString());
        QCOMPARE(names, QStringList({u"SPECIMEN Zoé"_s, u"SPECIMEN Anne"_s, u"SPECIMEN Zoé"_s}));
    }

    void theRightsAndTheExemptionAreNotShown()
    {
        BeneficiaryRecord covered = person(u"SPECIMEN"_s, u"Marie"_s);
        const BeneficiaryLine expected = lineOf(covered);
        covered.setText(CardKey::exonerationLabel, u"EXONÉRÉ"_s);
        covered.setRights({});
        QCOMPARE(lineOf(covered), expected);
        QCOMPARE(expected.size(), 4);
    }
};

template class RunnableTests<tst_PageOfCard, QCoreApplication>;
#include "tst_pageofcard.moc"
