#include "card/CardKeys.h"
#include "card/CardParser.h"
#include "card/PelmoraError.h"
#include "tests/card/CardXml.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

std::expected<CardRecord, Error> parse(const QString& text)
{
    const std::expected<XmlDocument, Error> document = XmlDocument::fromText(text);
    if (!document)
        return std::unexpected(document.error());
    return parseCardDocument(&*document);
}

CardRecord record(const QString& text)
{
    return parse(text).value();
}

BeneficiaryRecord onlyBeneficiary(const QString& content)
{
    return record(CardXml::card(CardXml::beneficiary(content))).beneficiaries().first();
}

/// XML of nested elements, the innermost holding the text: "a/b" and "x" give <a><b>x</b></a>.
QString nested(const QString& path, const QString& text)
{
    QString xml = text;
    const QStringList names = path.split(u'/');
    for (auto name = names.crbegin(); name != names.crend(); ++name)
        xml = u"<%1>%2</%1>"_s.arg(*name, xml);
    return xml;
}

struct Expectation
{
    QString key;
    QString path;
};

const QList<Expectation> expectedFields{
    {u"LastName"_s, u"ident/nomUsuel"_s},
    {u"PatronimicName"_s, u"ident/nomPatronymique"_s},
    {u"FirstName"_s, u"ident/prenomUsuel"_s},
    {u"BirthdayDate"_s, u"ident/naissance/date"_s},
    {u"MVBirthdayDateRaw"_s, u"ident/naissance/dateEnCarte"_s},
    {u"Rank"_s, u"ident/rangDeNaissance"_s},
    {u"SSN"_s, u"ident/nir"_s},
    {u"CertifiedSSN"_s, u"ident/nirCertifie"_s},
    {u"Quality"_s, u"amo/qualBenef"_s},
    {u"RegimeCode"_s, u"amo/codeRegime"_s},
    {u"FundCode"_s, u"amo/caisse"_s},
    {u"ManagementCenter"_s, u"amo/centreCarte"_s},
    {u"ManagementCode"_s, u"amo/codeGestion"_s},
    {u"ExonerationLabel"_s, u"amo/libelleExo"_s},
};

const QStringList topLevelKeys{u"SSN"_s,      u"LastName"_s,         u"FirstName"_s,     u"RegimeCode"_s,
                               u"FundCode"_s, u"ManagementCenter"_s, u"ManagementCode"_s};

} // namespace

class tst_CardParser : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void withoutADocumentTheResultIsTheInternalError()
    {
        const std::expected<CardRecord, Error> result = parseCardDocument(nullptr);
        QVERIFY(!result);
        QCOMPARE(result.error(), PelmoraError::internalError());
        QCOMPARE(result.error().code(), -11);
    }

    void theTableHasExactlyTheFourteenFields()
    {
        QCOMPARE(beneficiaryFields.size(), std::size_t(expectedFields.size()));
    }

    void eachFieldIsReadFromItsPathOnly_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("path");
        for (const Expectation& field : expectedFields)
            QTest::newRow(qPrintable(field.key)) << field.key << field.path;
    }

    void eachFieldIsReadFromItsPathOnly()
    {
        QFETCH(QString, key);
        QFETCH(QString, path);
        const BeneficiaryRecord person = onlyBeneficiary(nested(path, u"valeur"_s));
        QCOMPARE(person.keys(), QStringList{key});
        QCOMPARE(person.text(key), std::optional(u"valeur"_s));
    }

    void anEmptyFieldIsAnEmptyTextAndAMissingOneIsAbsent_data() { eachFieldIsReadFromItsPathOnly_data(); }

    void anEmptyFieldIsAnEmptyTextAndAMissingOneIsAbsent()
    {
        QFETCH(QString, key);
        QFETCH(QString, path);
        QCOMPARE(onlyBeneficiary(nested(path, u""_s)).text(key), std::optional(u""_s));
        QCOMPARE(onlyBeneficiary(u""_s).text(key), std::nullopt);
        QVERIFY(!onlyBeneficiary(u""_s).contains(key));
    }

    void theFirstElementOfAPathGivesTheValue()
    {
        QCOMPARE(
            onlyBeneficiary(u"<ident><nir>1</nir><nir>2</nir></ident><ident><nir>3</nir></ident>"_s).text(CardKey::ssn),
            std::optional(u"1"_s));
        QCOMPARE(onlyBeneficiary(u"<ident/><ident><nir/><nir>2</nir></ident>"_s).text(CardKey::ssn),
                 std::optional(u""_s));
    }

    void aPathDoesNotMatchBelowOtherElements()
    {
        QCOMPARE(onlyBeneficiary(u"<x><ident><nir>1</nir></ident></x><nir>2</nir>"_s).keys(), QStringList());
    }

    void aValueIsNotChanged()
    {
        QCOMPARE(onlyBeneficiary(u"<ident><nomUsuel>  De La\n\tTour </nomUsuel></ident>"_s).text(CardKey::lastName),
                 std::optional(u"  De La\n\tTour "_s));
        QCOMPARE(onlyBeneficiary(u"<ident><naissance><date>00001985</date></naissance></ident>"_s)
                     .text(CardKey::birthdayDate),
                 std::optional(u"00001985"_s));
    }

    void theSerialNumberIsTakenUnlessItsElementIsEmptyOrMissing()
    {
        const auto serial = [](const QString& technical) {
            return record(CardXml::card(CardXml::person(u"A"_s), technical)).text(CardKey::vitaleSerial);
        };
        QCOMPARE(serial(u"<numSerie> 0012 </numSerie>"_s), std::optional(u" 0012 "_s));
        QCOMPARE(serial(u"<numSerie>1</numSerie><numSerie>2</numSerie>"_s), std::optional(u"1"_s));
        QCOMPARE(serial(u"<numSerie/>"_s), std::nullopt);
        QCOMPARE(serial(u"<numSerie></numSerie>"_s), std::nullopt);
        QCOMPARE(serial(u"<numSerie/><numSerie>2</numSerie>"_s), std::nullopt);
        QCOMPARE(serial(u""_s), std::nullopt);
    }

    void theInsuredPersonIsTheFirstOfQuality0()
    {
        const CardRecord card = record(CardXml::card(CardXml::person(u"A"_s, u"1"_s) + CardXml::person(u"B"_s, u"0"_s) +
                                                     CardXml::person(u"C"_s, u"0"_s)));
        QCOMPARE(card.text(CardKey::lastName), std::optional(u"B"_s));
        QCOMPARE(card.beneficiaries().size(), 3);
        QCOMPARE(card.beneficiaries()[0].text(CardKey::lastName), std::optional(u"A"_s));
        QCOMPARE(card.beneficiaries()[1].text(CardKey::lastName), std::optional(u"B"_s));
        QCOMPARE(card.beneficiaries()[2].text(CardKey::lastName), std::optional(u"C"_s));
    }

    void withoutQuality0TheFirstBeneficiaryIsTheInsuredPerson_data()
    {
        QTest::addColumn<QString>("other");
        QTest::newRow("another") << u"6"_s;
        QTest::newRow("blank before") << u" 0"_s;
        QTest::newRow("blank after") << u"0 "_s;
        QTest::newRow("two zeros") << u"00"_s;
        QTest::newRow("empty") << u""_s;
        QTest::newRow("missing") << QString();
    }

    void withoutQuality0TheFirstBeneficiaryIsTheInsuredPerson()
    {
        QFETCH(QString, other);
        const CardRecord card = record(CardXml::card(CardXml::person(u"A"_s, u"6"_s) + CardXml::person(u"B"_s, other)));
        QCOMPARE(card.text(CardKey::lastName), std::optional(u"A"_s));
    }

    void theTopLevelCopiesOnlyTheInsuredPersonsIdentityAndCoverage()
    {
        QString first;
        QString insured = u"<amo><qualBenef>0</qualBenef></amo>"_s;
        for (const Expectation& field : expectedFields) {
            first += nested(field.path, u"autre"_s);
            if (field.key != "Quality"_L1)
                insured += nested(field.path, field.key);
        }
        const CardRecord card = record(CardXml::card(CardXml::beneficiary(first) + CardXml::beneficiary(insured)));
        QStringList sortedKeys = topLevelKeys;
        sortedKeys.sort();
        QCOMPARE(card.keys(), sortedKeys);
        for (const QString& key : topLevelKeys)
            QCOMPARE(card.text(key), std::optional(key));
    }

    void valuesMissingForTheInsuredPersonAreAbsentAtTheTopLevel()
    {
        const CardRecord card = record(CardXml::card(
            CardXml::beneficiary(u"<amo><codeGestion>10</codeGestion></amo>"_s) + CardXml::person(u"B"_s, u"0"_s)));
        QCOMPARE(card.text(CardKey::managementCode), std::nullopt);
        QCOMPARE(card.beneficiaries()[1].text(CardKey::managementCode), std::nullopt);
        QCOMPARE(card.keys(), QStringList{u"LastName"_s});
    }

    void rightsPeriodsGiveAnEmptyArrayAndNoPeriodGivesNone()
    {
        const QString period = u"<T_AsnPeriode><debut>01012025</debut><fin>31122025</fin></T_AsnPeriode>"_s;
        const auto rights = [](const QString& periods) {
            return onlyBeneficiary(u"<ident>"_s + periods + u"</ident>"_s).rights();
        };
        QCOMPARE(rights(u"<listePeriodesDroits>%1</listePeriodesDroits>"_s.arg(period.repeated(3))),
                 std::optional(QVariantList()));
        QCOMPARE(rights(u"<listePeriodesDroits><T_AsnPeriode/></listePeriodesDroits>"_s),
                 std::optional(QVariantList()));
        QCOMPARE(rights(u"<listePeriodesDroits/>"_s), std::nullopt);
        QCOMPARE(rights(u""_s), std::nullopt);
        QCOMPARE(onlyBeneficiary(nested(u"ident/listePeriodesDroits/T_AsnPeriode/debut"_s, u"1"_s)).keys(),
                 QStringList{u"AMORights"_s});
    }

    void withoutABeneficiaryTheResultIsTheNoBeneficiaryError_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("another root") << u"<autre><listeBenef><T_AsnBeneficiaire/></listeBenef></autre>"_s;
        QTest::newRow("a root around") << u"<x>%1</x>"_s.arg(CardXml::card(CardXml::person(u"A"_s)));
        QTest::newRow("serial number alone") << CardXml::card(u""_s, u"<numSerie>1</numSerie>"_s);
        QTest::newRow("no list") << u"<T_AsnDonneesVitale/>"_s;
        QTest::newRow("outside the list") << u"<T_AsnDonneesVitale><T_AsnBeneficiaire/></T_AsnDonneesVitale>"_s;
        QTest::newRow("other case") << CardXml::card(u"<t_asnbeneficiaire/>"_s);
    }

    void withoutABeneficiaryTheResultIsTheNoBeneficiaryError()
    {
        QFETCH(QString, text);
        const std::expected<CardRecord, Error> result = parse(text);
        QVERIFY(!result);
        QCOMPARE(result.error(), PelmoraError::vitaleNoBen());
        QCOMPARE(result.error().description(), std::optional(u"La carte Vitale ne comporte aucun bénéficiaire."_s));
    }

    void anEmptyBeneficiaryIsABeneficiary()
    {
        const CardRecord card = record(CardXml::card(u"<T_AsnBeneficiaire/>"_s));
        QCOMPARE(card.beneficiaries().size(), 1);
        QCOMPARE(card.beneficiaries().first(), BeneficiaryRecord());
        QCOMPARE(card.keys(), QStringList());
    }

    void beneficiariesOfSeveralListsAreInDocumentOrder()
    {
        const CardRecord card = record(u"<T_AsnDonneesVitale><listeBenef>%1</listeBenef><x/><listeBenef>%2</listeBenef>"
                                       "</T_AsnDonneesVitale>"_s.arg(CardXml::person(u"A"_s), CardXml::person(u"B"_s)));
        QCOMPARE(card.beneficiaries().size(), 2);
        QCOMPARE(card.beneficiaries()[1].text(CardKey::lastName), std::optional(u"B"_s));
    }

    void aRecordMadeOfADocumentAloneHasNeitherFundLabelNorText()
    {
        const CardRecord card = record(CardXml::card(CardXml::person(u"A"_s)));
        QVERIFY(!card.contains(CardKey::fundCodeLibelle));
        QVERIFY(!card.contains(CardKey::xmlString));
    }

    void fiveHundredBeneficiariesAreReadAndOneMoreIsTheGeneralError()
    {
        const auto family = [](int count) {
            QString persons;
            for (int index = 0; index < count; ++index)
                persons += CardXml::person(QString::number(index), u"6"_s);
            return parse(CardXml::card(persons, u"<numSerie>1</numSerie>"_s));
        };
        QCOMPARE(family(500).value().beneficiaries().size(), 500);
        QVERIFY(!family(501).has_value());
        QCOMPARE(family(501).error(), PelmoraError::generalError());
    }

    void theSameDocumentGivesTheSameRecordEachTime()
    {
        const std::expected<XmlDocument, Error> document =
            XmlDocument::fromText(CardXml::card(CardXml::person(u"A"_s) + CardXml::person(u"B"_s, u"0"_s)));
        QVERIFY(document.has_value());
        QCOMPARE(parseCardDocument(&*document).value(), parseCardDocument(&*document).value());
    }
};

template class RunnableTests<tst_CardParser, QCoreApplication>;
#include "tst_cardparser.moc"
