#include "service/CardCoverage.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString card(const QString& beneficiaries)
{
    return u"<T_AsnDonneesVitale><tech/><listeBenef>"_s + beneficiaries + u"</listeBenef></T_AsnDonneesVitale>"_s;
}

QString beneficiary(const QString& amo)
{
    return u"<T_AsnBeneficiaire><ident><nir>1</nir></ident><amo>"_s + amo + u"</amo></T_AsnBeneficiaire>"_s;
}

QString covered(const QString& quality, const QString& scheme, const QString& fund)
{
    return beneficiary(
        u"<qualBenef>%1</qualBenef><codeRegime>%2</codeRegime><caisse>%3</caisse>"_s.arg(quality, scheme, fund));
}

/// "scheme fund", or "refused".
QString coverageOf(const QString& text)
{
    const std::optional<CardCoverage> coverage = cardCoverage(text);
    return coverage ? coverage->scheme + u' ' + coverage->fund : u"refused"_s;
}

} // namespace

class tst_CardCoverage : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theInsuredPersonGivesTheCoverage()
    {
        QCOMPARE(coverageOf(card(covered(u"6"_s, u"02"_s, u"001"_s) + covered(u"0"_s, u"01"_s, u"751"_s) +
                                 covered(u"0"_s, u"03"_s, u"003"_s))),
                 u"01 751"_s);
    }

    void withoutAnInsuredPersonTheFirstBeneficiaryGivesIt()
    {
        QCOMPARE(coverageOf(card(covered(u"6"_s, u"02"_s, u"001"_s) + covered(u" 0"_s, u"01"_s, u"751"_s))),
                 u"02 001"_s);
        QCOMPARE(coverageOf(card(beneficiary(u""_s) + covered(u"6"_s, u"01"_s, u"751"_s))), u" "_s);
    }

    void theFirstElementOfEachNameIsUsed()
    {
        QCOMPARE(coverageOf(card(beneficiary(u"<caisse>751</caisse><caisse>752</caisse><codeRegime/>"
                                             "<codeRegime>01</codeRegime>"_s))),
                 u" 751"_s);
    }

    void commentsCdataAndInnerElementsGiveOneText()
    {
        QCOMPARE(coverageOf(card(beneficiary(u"<codeRegime>0<!-- x --><![CDATA[1]]></codeRegime>"
                                             "<caisse>7<i>5</i><?p x?>&#49;</caisse>"_s))),
                 u"01 751"_s);
    }

    void elementsElsewhereOrInANamespaceAreIgnored()
    {
        QCOMPARE(coverageOf(card(beneficiary(u"<x><codeRegime>09</codeRegime></x>"
                                             "<n:caisse xmlns:n='urn:x'>999</n:caisse>"_s))),
                 u" "_s);
        QCOMPARE(coverageOf(u"<T_AsnDonneesVitale xmlns='urn:x'><listeBenef>%1</listeBenef></T_AsnDonneesVitale>"_s.arg(
                     covered(u"0"_s, u"01"_s, u"751"_s))),
                 u" "_s);
    }

    void anotherDocumentHasNoCoverage()
    {
        QCOMPARE(coverageOf(u"<autre/>"_s), u" "_s);
        QCOMPARE(coverageOf(card(u""_s)), u" "_s);
    }

    void aTextThatIsNotStrictXmlIsRefused_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << u""_s;
        QTest::newRow("no XML") << u"bonjour"_s;
        QTest::newRow("truncated") << u"<a><b>"_s;
        QTest::newRow("text after the root") << u"<a/>x"_s;
        QTest::newRow("two roots") << u"<a/><a/>"_s;
        QTest::newRow("duplicate attributes") << u"<a b='1' b='2'/>"_s;
        QTest::newRow("undefined entity") << u"<a>&x;</a>"_s;
        QTest::newRow("empty declarations") << u"<!DOCTYPE a []><a/>"_s;
        QTest::newRow("declared element") << u"<!DOCTYPE a [<!ELEMENT a ANY>]><a/>"_s;
        QTest::newRow("declared attribute") << u"<!DOCTYPE a SYSTEM 'x' [<!ATTLIST a b CDATA 'c'>]><a/>"_s;
        QTest::newRow("instruction in a document type") << u"<!DOCTYPE a [<?p x?>]><a/>"_s;
        QTest::newRow("entity of a document type elsewhere") << u"<!DOCTYPE a SYSTEM 'x.dtd'><a>&x;</a>"_s;
        QTest::newRow("two document types") << u"<!DOCTYPE a><!DOCTYPE a><a/>"_s;
        QTest::newRow("entity") << u"<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>"_s;
        QTest::newRow("NUL") << u"<a>%1</a>"_s.arg(QChar(0));
        QTest::newRow("control character") << u"<a>%1</a>"_s.arg(QChar(1));
        QTest::newRow("deep") << QString(u"<a>"_s).repeated(100'000) + QString(u"</a>"_s).repeated(100'000);
        QTest::newRow("deep, left open") << QString(u"<a>"_s).repeated(1'000'000);
    }

    void aTextThatIsNotStrictXmlIsRefused()
    {
        QFETCH(QString, text);
        QCOMPARE(coverageOf(text), u"refused"_s);
    }

    void aDocumentTypeWithoutDeclarationsIsIgnored_data()
    {
        QTest::addColumn<QString>("type");
        QTest::newRow("name") << u"<!DOCTYPE T_AsnDonneesVitale>"_s;
        QTest::newRow("file") << u"<!DOCTYPE x SYSTEM 'file:///dev/zero'>"_s;
        QTest::newRow("public") << u"<!DOCTYPE x PUBLIC '-//X//Y//FR' \"http://127.0.0.1:9/x.dtd\">"_s;
        QTest::newRow("brackets in quotes") << u"<!DOCTYPE x SYSTEM 'a[\"b]'>"_s;
    }

    void aDocumentTypeWithoutDeclarationsIsIgnored()
    {
        QFETCH(const QString, type);
        const QString sound = card(covered(u"0"_s, u"01"_s, u"751"_s));
        QCOMPARE(coverageOf(type + sound), coverageOf(sound));
        QVERIFY(coverageOf(sound) != u"refused"_s);
    }

    void nestingUpTo256LevelsIsRead()
    {
        QCOMPARE(coverageOf(QString(u"<a>"_s).repeated(256) + QString(u"</a>"_s).repeated(256)), u" "_s);
        QCOMPARE(coverageOf(QString(u"<a>"_s).repeated(257) + QString(u"</a>"_s).repeated(257)), u"refused"_s);
    }

    void theDeclaredEncodingIsIgnored()
    {
        QCOMPARE(coverageOf(u"<?xml version='1.0' encoding='UTF-16'?>"_s + card(covered(u"0"_s, u"01"_s, u"é"_s))),
                 u"01 é"_s);
    }
};

template class RunnableTests<tst_CardCoverage, QCoreApplication>;
#include "tst_cardcoverage.moc"
