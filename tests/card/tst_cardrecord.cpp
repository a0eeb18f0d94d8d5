#include "card/CardKeys.h"
#include "card/CardRecord.h"
#include "support/MXLog.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

#include <ostream>

using namespace Qt::StringLiterals;

namespace {

template <typename T>
concept PrintableByQDebug = requires(QDebug debug, const T& value) { debug << value; };

template <typename T>
concept PrintableByAStream = requires(std::ostream& stream, const T& value) { stream << value; };

template <typename T>
concept ConvertibleToText = std::is_convertible_v<T, QVariant> || std::is_convertible_v<T, QString>;

template <typename T>
constexpr bool canReachALog =
    PrintableByQDebug<T> || PrintableByAStream<T> || ConvertibleToText<T> || fmt::is_formattable<T>::value;

// Types with patients' data cannot be printed. Other types can, which shows that the check works.
static_assert(!canReachALog<CardRecord>);
static_assert(!canReachALog<BeneficiaryRecord>);
static_assert(!PrintableByQDebug<PersonalRecord> && !fmt::is_formattable<PersonalRecord>::value);
static_assert(!fmt::is_formattable<QList<BeneficiaryRecord>>::value);
static_assert(!fmt::is_formattable<std::optional<CardRecord>>::value);
static_assert(PrintableByQDebug<QString> && fmt::is_formattable<QString>::value && PrintableByAStream<std::string>);

} // namespace

class tst_CardRecord : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aKeyThatWasNotSetIsAbsent()
    {
        CardRecord record;
        QCOMPARE(record.text(CardKey::ssn), std::nullopt);
        QVERIFY(!record.contains(CardKey::ssn));
        QCOMPARE(record.keys(), QStringList());
        QCOMPARE(record.beneficiaries().size(), 0);
    }

    void anEmptyTextIsPresent()
    {
        CardRecord record;
        record.setText(CardKey::lastName, u""_s);
        QVERIFY(record.contains(CardKey::lastName));
        QCOMPARE(record.text(CardKey::lastName), std::optional(u""_s));
        QCOMPARE(record.keys(), QStringList{u"LastName"_s});
    }

    void settingATextReplacesThePreviousOne()
    {
        CardRecord record;
        record.setText(CardKey::lastName, u"A"_s);
        record.setText(CardKey::lastName, u"B"_s);
        QCOMPARE(record.text(CardKey::lastName), std::optional(u"B"_s));
    }

    void absentRightsDifferFromEmptyRights()
    {
        BeneficiaryRecord none;
        BeneficiaryRecord empty;
        empty.setRights({});
        QCOMPARE(none.rights(), std::nullopt);
        QCOMPARE(empty.rights(), std::optional(QVariantList()));
        QVERIFY(empty.contains(CardKey::amoRights));
        QCOMPARE(empty.text(CardKey::amoRights), std::nullopt);
        QVERIFY(!(none == empty));
    }

    void recordsAreEqualWhenAllTheirValuesAre()
    {
        CardRecord left;
        CardRecord right;
        BeneficiaryRecord person;
        person.setText(CardKey::lastName, u"SPECIMEN"_s);
        left.setBeneficiaries({person});
        QVERIFY(!(left == right));
        right.setBeneficiaries({person});
        QVERIFY(left == right);
        right.setText(CardKey::lastName, u"SPECIMEN"_s);
        QVERIFY(!(left == right));
    }

    void aCopyIsIndependent()
    {
        CardRecord record;
        record.setText(CardKey::lastName, u"A"_s);
        CardRecord copy = record;
        copy.setText(CardKey::lastName, u"B"_s);
        QCOMPARE(record.text(CardKey::lastName), std::optional(u"A"_s));
    }
};

template class RunnableTests<tst_CardRecord, QCoreApplication>;
#include "tst_cardrecord.moc"
