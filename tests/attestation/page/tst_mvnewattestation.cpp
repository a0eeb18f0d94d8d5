#include "Fixtures.h"
#include "attestation/page/MVNewAttestation.h"
#include "attestation/page/SchemeLogos.h"
#include "card/CardKeys.h"
#include "support/MXLog.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <stdexcept>

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

CardRecord cardWith(const QList<std::pair<RecordKey, QString>>& texts)
{
    CardRecord card;
    for (const auto& [key, value] : texts)
        card.setText(key, value);
    return card;
}

// The first failure to parse ends in an exception instead of no date.
class RaisingDateFormatter final : public DateFormatter
{
public:
    using DateFormatter::DateFormatter;

    [[nodiscard]] std::optional<QDate> dateFromString(QStringView /*text*/) const override
    {
        throw std::runtime_error("no calendar");
    }
};

// What the default logger writes while this lives.
class LogWatch
{
public:
    LogWatch()
    {
        MXLog::defaultLogger().setLineWriter([this](MXLog::Level level, std::string_view line) {
            lines.append({level, QString::fromUtf8(line.data(), qsizetype(line.size()))});
        });
    }
    ~LogWatch() { MXLog::defaultLogger().setLineWriter(nullptr); }
    Q_DISABLE_COPY_MOVE(LogWatch)

    QList<std::pair<MXLog::Level, QString>> lines;
};

} // namespace

class tst_MVNewAttestation : public QObject
{
    Q_OBJECT

private:
    TemporarySettings m_settings;
    SchemeLogos m_logos{stagedBundle()};

    AttestationPage pageOf(const CardRecord& card)
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        attestation.setVitale(card);
        return attestation.page();
    }

    BeneficiaryLine lineOf(const BeneficiaryRecord& person) { return pageOf(cardOf({person})).lines.value(0); }

private Q_SLOTS:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_settings.setShowsRightLabel(false);
    }

    void aNewAttestationIsAnEmptyPage()
    {
        const MVNewAttestation attestation(m_settings.store(), m_logos);
        const AttestationPage& page = attestation.page();
        QVERIFY(!page.logo);
        QCOMPARE(page.fundName, QString());
        QCOMPARE(page.NSS, QString());
        QCOMPARE(page.insuredName, QString());
        QVERIFY(!page.showRightLabel);
        QVERIFY(!page.organism);
        QVERIFY(!page.gestionCode);
        QVERIFY(page.lines.isEmpty());
        QCOMPARE(page.inset, QMarginsF(8, 8, 8, 8));
        QCOMPARE(attestation.vitale(), CardRecord());
    }

    void theRecordIsKeptAndTheViewIsAskedToDraw()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        const QSignalSpy needsDisplay(&attestation, &MVNewAttestation::needsDisplay);
        attestation.setVitale(specimenCard(2));
        QCOMPARE(attestation.vitale(), specimenCard(2));
        QCOMPARE(needsDisplay.count(), 1);
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

    void missingValuesAreShownAsThePlatformShowsThem()
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

    void theOrganismHasItsCentreButForSchemes2And4_data()
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
    void theOrganismHasItsCentreButForSchemes2And4()
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

    void theLogoIsTheSchemes()
    {
        QCOMPARE(pageOf(cardWith({{CardKey::regimeCode, u"1"_s}})).logo, *m_logos.logoNamed(u"01"_s));
        QCOMPARE(pageOf(cardWith({{CardKey::regimeCode, u"091"_s}})).logo, *m_logos.logoNamed(u"91"_s));
        QVERIFY(!pageOf(cardWith({{CardKey::regimeCode, u"55"_s}})).logo);
    }

    void aSchemeWithoutALogoKeepsThePreviousOne()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        attestation.setVitale(cardWith({{CardKey::regimeCode, u"2"_s}}));
        attestation.setVitale(cardWith({{CardKey::regimeCode, u"55"_s}}));
        QCOMPARE(attestation.page().logo, *m_logos.logoNamed(u"02"_s));
        QCOMPARE(attestation.page().organism, u"55 000 0000"_s);
    }

    void everyOtherValueIsRebuiltFromScratch()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        attestation.setVitale(specimenCard(3));
        attestation.setVitale(CardRecord());
        QVERIFY(!attestation.page().fundName);
        QVERIFY(!attestation.page().NSS);
        QCOMPARE(attestation.page().insuredName, u"(null) (null)"_s);
        QVERIFY(attestation.page().lines.isEmpty());
    }

    void theTitleOptionIsReadEachTimeARecordIsSet()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        m_settings.setShowsRightLabel(true);
        QVERIFY(!attestation.page().showRightLabel);
        attestation.setVitale(specimenCard(1));
        QVERIFY(attestation.page().showRightLabel);
        m_settings.setShowsRightLabel(false);
        QVERIFY(attestation.page().showRightLabel);
        attestation.setVitale(specimenCard(1));
        QVERIFY(!attestation.page().showRightLabel);
    }

    void theCertifiedNumberWinsOverTheOther()
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

    void beneficiariesKeepTheirOrderAndTheirDoubles()
    {
        const AttestationPage page = pageOf(cardOf(
            {person(u"SPECIMEN"_s, u"Zoé"_s), person(u"SPECIMEN"_s, u"Anne"_s), person(u"SPECIMEN"_s, u"Zoé"_s)}));
        QStringList names;
        for (const BeneficiaryLine& line : page.lines)
            names.append(line.value(u"Name"_s).toString());
        QCOMPARE(names, QStringList({u"SPECIMEN Zoé"_s, u"SPECIMEN Anne"_s, u"SPECIMEN Zoé"_s}));
    }

    void theRightsAndTheExonerationPlayNoPart()
    {
        BeneficiaryRecord covered = person(u"SPECIMEN"_s, u"Marie"_s);
        const BeneficiaryLine expected = lineOf(covered);
        covered.setText(CardKey::exonerationLabel, u"EXONÉRÉ"_s);
        covered.setRights({});
        QCOMPARE(lineOf(covered), expected);
        QCOMPARE(expected.size(), 4);
    }

    void theDateFormatterIsFrenchAndReused()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        const std::shared_ptr<DateFormatter> formatter = attestation.dateFormatter();
        QCOMPARE(formatter->locale().name(), u"fr_FR"_s);
        attestation.setVitale(specimenCard(1));
        QCOMPARE(attestation.dateFormatter(), formatter);
        QCOMPARE(formatter->dateFormat(), u"dd/MM/yyyy"_s);
    }

    void aStepThatRaisesIsLoggedAndLeavesWhatWasSet()
    {
        MVNewAttestation attestation(m_settings.store(), m_logos);
        attestation.setVitale(specimenCard(2));
        attestation.setDateFormatter(std::make_shared<RaisingDateFormatter>(QLocale(u"fr_FR"_s)));

        const LogWatch log;
        CardRecord other = specimenCard(5);
        other.setText(CardKey::regimeCode, u"2"_s);
        attestation.setVitale(other);
        QCOMPARE(log.lines, (QList<std::pair<MXLog::Level, QString>>{{MXLog::Error, u"no calendar"_s}}));
        QCOMPARE(attestation.page().organism, u"02 751"_s);
        QCOMPARE(attestation.page().lines.size(), 2);
    }
};

QTEST_MAIN(tst_MVNewAttestation)
#include "tst_mvnewattestation.moc"
