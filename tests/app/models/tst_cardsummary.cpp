#include "app/models/CardSummary.h"
#include "card/CardKeys.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

CardRecord card(const QString& lastName, const QString& firstName, const QString& number, int beneficiaries)
{
    CardRecord record;
    record.setText(CardKey::lastName, lastName);
    record.setText(CardKey::firstName, firstName);
    record.setText(CardKey::ssn, number);
    record.setBeneficiaries(QList<BeneficiaryRecord>(beneficiaries));
    return record;
}

} // namespace

class tst_CardSummary : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void noCardHasAnEmptySummary() { QCOMPARE(cardSummary(std::nullopt), QString()); }

    void theNumberOfBeneficiariesIsPluralisedInFrench_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("summary");
        const QString start = u"SPECIMEN Hélène\n285057511612381\n"_s;
        QTest::newRow("none") << 0 << start + u"0 bénéficiaire"_s;
        QTest::newRow("one") << 1 << start + u"1 bénéficiaire"_s;
        QTest::newRow("two") << 2 << start + u"2 bénéficiaires"_s;
        QTest::newRow("many") << 1234 << start + u"1234 bénéficiaires"_s;
    }

    void theNumberOfBeneficiariesIsPluralisedInFrench()
    {
        QFETCH(const int, count);
        QTEST(cardSummary(card(u"SPECIMEN"_s, u"Hélène"_s, u"285057511612381"_s, count)), "summary");
    }

    void missingValuesAreShownAsMissing()
    {
        QCOMPARE(cardSummary(CardRecord()), u"(null) (null)\n(null)\n0 bénéficiaire"_s);
    }

    void namesAreShownUnchanged()
    {
        QCOMPARE(cardSummary(card(u"%2 %1"_s, u"<b>&amp;</b>"_s, u""_s, 1)), u"%2 %1 <b>&amp;</b>\n\n1 bénéficiaire"_s);
    }
};

template class RunnableTests<tst_CardSummary, void>;
#include "tst_cardsummary.moc"
