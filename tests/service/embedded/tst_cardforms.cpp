#include "service/embedded/CardForms.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// The text, or "(damaged)".
QString textOf(CardForm form, const QByteArray& bytes)
{
    return cardText(form, bytes).value_or(u"(damaged)"_s);
}

QString damaged()
{
    return u"(damaged)"_s;
}

} // namespace

class tst_CardForms : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void aTextIsLatin1WithoutItsFiller()
    {
        QCOMPARE(textOf(CardForm::Text, "SPECIMEN"), u"SPECIMEN"_s);
        QCOMPARE(textOf(CardForm::Text, "H\xE9l\xE8ne   "), u"Hélène"_s);
        QCOMPARE(textOf(CardForm::Text, QByteArray("MOD\xC8LE \0 \0\0", 11)), u"MODÈLE"_s);
        QCOMPARE(textOf(CardForm::Text, " DE LA  RUE "), u" DE LA  RUE"_s);
        QCOMPARE(textOf(CardForm::Text, "A00"), u"A00"_s);
        QCOMPARE(textOf(CardForm::Text, "<&>\"'"), u"<&>\"'"_s);
    }

    void aTextOfFillerOnlyIsEmpty()
    {
        for (const CardForm form : {CardForm::Text, CardForm::Utf8, CardForm::Digits, CardForm::Number, CardForm::Date,
                                    CardForm::ShortDate}) {
            for (const QByteArray& filler : {QByteArray(), QByteArray(8, ' '), QByteArray(8, '\0')})
                QCOMPARE(textOf(form, filler), QString());
        }
        QCOMPARE(textOf(CardForm::PackedDigits, "\xFF\xFF"), QString());
    }

    void aControlCharacterIsRefused()
    {
        for (char byte = 0; byte < ' '; ++byte) {
            const QByteArray bytes = QByteArray("SPECI") + byte + "MEN";
            QCOMPARE(textOf(CardForm::Text, bytes), damaged());
            QCOMPARE(textOf(CardForm::Utf8, bytes), damaged());
        }
        QCOMPARE(textOf(CardForm::Text, "SPECI\x7FMEN"), damaged());
        QCOMPARE(textOf(CardForm::Utf8, "SPECI\x7FMEN"), damaged());
        QCOMPARE(textOf(CardForm::Utf8, "SPECI\xC2\x85MEN"), damaged());
    }

    void everyByteAbove7FGivesACharacterOfAName()
    {
        for (int byte = 0x80; byte <= 0xFF; ++byte) {
            const QString expected = byte < 0xA0 ? u"A\uFFFDB"_s : u"A%1B"_s.arg(QChar(byte));
            QCOMPARE(textOf(CardForm::Text, QByteArray("A") + static_cast<char>(byte) + "B"), expected);
        }
    }

    void invalidUtf8IsRefused()
    {
        QCOMPARE(textOf(CardForm::Utf8, "Pas d\xE2\x80\x99"
                                        "exon\xC3\xA9ration  "),
                 u"Pas d’exonération"_s);
        QCOMPARE(textOf(CardForm::Utf8, "\xF0\x9F\x99\x82"), u"🙂"_s);
        for (const QByteArray& bytes : {QByteArray("\xE9t\xE9"), QByteArray("\xE2\x80"), QByteArray("\xC0\x80"),
                                        QByteArray("\xED\xA0\x80"), QByteArray("\xEF\xBF\xBF"),
                                        QByteArray("\xE2\x80\xAE"
                                                   "A")})
            QCOMPARE(textOf(CardForm::Utf8, bytes), damaged());
    }

    void digitsKeepLeadingZeros()
    {
        QCOMPARE(textOf(CardForm::Digits, "0042"), u"0042"_s);
        QCOMPARE(textOf(CardForm::Digits, "0  "), u"0"_s);
        for (const QByteArray& bytes :
             {QByteArray("4 2"), QByteArray(" 42"), QByteArray("4A"), QByteArray("-1"), QByteArray("\xB2")})
            QCOMPARE(textOf(CardForm::Digits, bytes), damaged());
    }

    void aByteHasTwoPackedDigits()
    {
        QCOMPARE(textOf(CardForm::PackedDigits, QByteArray::fromHex("0751")), u"0751"_s);
        QCOMPARE(textOf(CardForm::PackedDigits, QByteArray::fromHex("751FFF")), u"751"_s);
        for (const char* digits : {"7A", "F751", "75F1", "D0"})
            QCOMPARE(textOf(CardForm::PackedDigits, QByteArray::fromHex(digits)), damaged());
    }

    void theKeyOfANumberIsKeptOrAdded()
    {
        QCOMPARE(textOf(CardForm::Number, "185057800608491"), u"185057800608491"_s);
        QCOMPARE(textOf(CardForm::Number, "1850578006084"), u"185057800608491"_s);
        QCOMPARE(textOf(CardForm::Number, "1550"
                                          "12A001234  "),
                 u"155012A00123483"_s);
        QCOMPARE(textOf(CardForm::Number, "269062B123456"), u"269062B12345634"_s);
        // A wrong key of the card is kept.
        QCOMPARE(textOf(CardForm::Number, "185057800608492"), u"185057800608492"_s);
    }

    void noKeyIsAddedToZeros()
    {
        QCOMPARE(textOf(CardForm::Number, "0000000000000"), u"0000000000000"_s);
        QCOMPARE(textOf(CardForm::Number, "000000000000000"), u"000000000000000"_s);
    }

    void aValueThatIsNotANumberIsRefused()
    {
        for (const QByteArray& bytes :
             {QByteArray("185057800608"), QByteArray("18505780060849"), QByteArray("1850578006084911"),
              QByteArray("1A50578006084"), QByteArray("185053A006084"), QByteArray("185052C006084"),
              QByteArray("1850578006 84"), QByteArray("18505780060849A")})
            QCOMPARE(textOf(CardForm::Number, bytes), damaged());
    }

    void datesAreReordered()
    {
        QCOMPARE(textOf(CardForm::Date, "19850514"), u"14051985"_s);
        QCOMPARE(textOf(CardForm::ShortDate, "19850514"), u"850514"_s);
    }

    void unknownPartsOfADateAreZeros()
    {
        QCOMPARE(textOf(CardForm::Date, "19850000"), u"00001985"_s);
        QCOMPARE(textOf(CardForm::Date, "1985    "), u"00001985"_s);
        QCOMPARE(textOf(CardForm::ShortDate, "198505  "), u"850500"_s);
        // Two zeros would be the year 2000.
        QCOMPARE(textOf(CardForm::ShortDate, "    0514"), QString());
        QCOMPARE(textOf(CardForm::ShortDate, "20000514"), u"000514"_s);
    }

    void daysThatDoNotExistAreRefused()
    {
        for (const CardForm form : {CardForm::Date, CardForm::ShortDate}) {
            for (const char* bytes : {"19851314", "19854200", "19850532", "19850230", "19850229", "    0230"})
                QCOMPARE(textOf(form, bytes), damaged());
            for (const char* bytes : {"19840229", "    0229", "1985  31", "20000229"})
                QVERIFY(textOf(form, bytes) != damaged());
        }
    }

    void aValueThatIsNotADateIsRefused()
    {
        for (const CardForm form : {CardForm::Date, CardForm::ShortDate}) {
            for (const QByteArray& bytes :
                 {QByteArray("850514"), QByteArray("1985-05-14"), QByteArray("1985051"), QByteArray("198505140"),
                  QByteArray("1985051X"), QByteArray("1985\0\0\0\0", 8)})
                QCOMPARE(textOf(form, bytes), damaged());
        }
    }

    void hexadecimalAcceptsAnyBytes()
    {
        QCOMPARE(textOf(CardForm::Hexadecimal, QByteArray::fromHex("00fFa1")), u"00FFA1"_s);
        QCOMPARE(textOf(CardForm::Hexadecimal, QByteArray()), QString());
    }
};

template class RunnableTests<tst_CardForms, QCoreApplication>;
#include "tst_cardforms.moc"
