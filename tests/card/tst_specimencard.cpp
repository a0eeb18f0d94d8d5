#include "card/CardKeys.h"
#include "card/CardParser.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// The shipped specimen, or the text of the error when it cannot be read.
std::expected<CardRecord, QString> specimen()
{
    QFile file(QStringLiteral(PELMORA_STAGE_SHARE "/specimen.xml"));
    if (!file.open(QIODevice::ReadOnly))
        return std::unexpected(file.errorString());
    const std::expected<XmlDocument, Error> document = XmlDocument::fromText(QString::fromUtf8(file.readAll()));
    if (!document)
        return std::unexpected(document.error().localizedDescription());
    const std::expected<CardRecord, Error> record = parseCardDocument(&*document);
    if (!record)
        return std::unexpected(record.error().localizedDescription());
    return *record;
}

/// Whether a social security number of 15 digits ends with the key of its first 13 digits.
bool hasValidKey(const QString& number)
{
    bool isNumber = false;
    const quint64 body = number.first(13).toULongLong(&isNumber);
    return number.size() == 15 && isNumber && number.last(2).toULongLong() == 97 - body % 97;
}

} // namespace

class tst_SpecimenCard : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theCardHasThreeBeneficiariesNamedSpecimen()
    {
        const std::expected<CardRecord, QString> card = specimen();
        QVERIFY2(card.has_value(), card ? "" : qPrintable(card.error()));
        QCOMPARE(card->beneficiaries().size(), 3);
        for (const BeneficiaryRecord& person : card->beneficiaries())
            QCOMPARE(person.text(CardKey::lastName), std::optional(u"SPECIMEN"_s));
        QCOMPARE(card->beneficiaries().first().text(CardKey::quality), std::optional(u"0"_s));
    }

    void theNumbersHaveValidKeys()
    {
        const std::expected<CardRecord, QString> card = specimen();
        QVERIFY(card.has_value());
        for (const BeneficiaryRecord& person : card->beneficiaries()) {
            QVERIFY(hasValidKey(person.text(CardKey::ssn).value_or(QString(15, u'x'))));
            QVERIFY(hasValidKey(person.text(CardKey::certifiedSSN).value_or(*person.text(CardKey::ssn))));
        }
    }

    void theChildHasNoNumberOfHerOwn()
    {
        const std::expected<CardRecord, QString> card = specimen();
        QVERIFY(card.has_value());
        const BeneficiaryRecord& child = card->beneficiaries().last();
        QVERIFY(!child.contains(CardKey::certifiedSSN));
        QCOMPARE(child.text(CardKey::ssn), card->text(CardKey::ssn));
    }

    void everyFieldOfACardIsUsed()
    {
        const std::expected<CardRecord, QString> card = specimen();
        QVERIFY(card.has_value());
        QVERIFY(card->contains(CardKey::vitaleSerial));
        QSet<QString> used;
        for (const BeneficiaryRecord& person : card->beneficiaries()) {
            const QStringList keys = person.keys();
            used.unite(QSet<QString>(keys.cbegin(), keys.cend()));
        }
        for (const BeneficiaryField& field : beneficiaryFields)
            QVERIFY2(used.contains(field.key.toString()), field.path.utf8().data());
        QVERIFY(used.contains(CardKey::amoRights.toString()));
    }
};

template class RunnableTests<tst_SpecimenCard, QCoreApplication>;
#include "tst_specimencard.moc"
