#include "attestation/text/TextBreaking.h"
#include "attestation/text/TextShaping.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_TextBreaking : public TestCase
{
    Q_OBJECT

private:
    PageFonts m_fonts = pageFonts();
    PageFont m_font = m_fonts.systemFontOfSize(12);

    QStringList broken(const QString& text, double width)
    {
        QStringList texts;
        for (const BrokenLine& line : breakText(text, m_font, width, 1000))
            texts.append(line.text);
        return texts;
    }

    double widthOf(const QString& text) { return widthOfText(text, m_font); }

private Q_SLOTS:
    void aTextThatFitsIsOneLine()
    {
        const QList<BrokenLine> lines = breakText(u"SPECIMEN Marie"_s, m_font, 500, 1000);
        QCOMPARE(lines.size(), 1);
        QCOMPARE(lines[0].text, u"SPECIMEN Marie"_s);
        QVERIFY(qAbs(lines[0].width - widthOf(u"SPECIMEN Marie"_s)) < 0.01);
    }

    void aNewLineBreaksTheText()
    {
        QCOMPARE(broken(u"un\ndeux\n\nquatre"_s, 500), QStringList({u"un"_s, u"deux"_s, u""_s, u"quatre"_s}));
    }

    void aLongTextIsBrokenBetweenWords()
    {
        QCOMPARE(broken(u"SPECIMEN DE LA ROCHE"_s, widthOf(u"SPECIMEN DE L"_s)),
                 QStringList({u"SPECIMEN DE"_s, u"LA ROCHE"_s}));
    }

    void aTextExactlyAsWideAsItsBoxIsNotBroken()
    {
        QCOMPARE(broken(u"SPECIMEN Marie"_s, widthOf(u"SPECIMEN Marie"_s)), QStringList(u"SPECIMEN Marie"_s));
    }

    void aHyphenatedWordMovesUnbrokenToTheNextLine()
    {
        QCOMPARE(broken(u"les lignes ci-dessous, ci-après"_s, widthOf(u"les lignes ci-des"_s)),
                 QStringList({u"les lignes"_s, u"ci-dessous,"_s, u"ci-après"_s}));
    }

    void aHyphenatedWordTooLongForALineIsBrokenAtItsHyphen()
    {
        QCOMPARE(broken(u"MARTIN-SPECIMEN Zoé"_s, widthOf(u"MARTIN-SPECIM"_s)),
                 QStringList({u"MARTIN-"_s, u"SPECIMEN Zoé"_s}));
        QCOMPARE(broken(u"  MARTIN-SPECIMEN"_s, widthOf(u"  MARTIN-SPEC"_s)),
                 QStringList({u"  MARTIN-"_s, u"SPECIMEN"_s}));
    }

    void theNumberOfLinesIsBounded()
    {
        QCOMPARE(breakText(u"un\ndeux\ntrois"_s, m_font, 500, 2).size(), 2);
        QCOMPARE(breakText(QString(1000, u'W'), m_font, 100, 3).size(), 3);
    }

    void aTextLongerThanAPageCanHoldIsCut() { QCOMPARE(drawableText(QString(4'000'000, u'W')), QString(10'000, u'W')); }

    void directionAndJoiningCharactersAreLeftOut()
    {
        QCOMPARE(drawableText(u"a\u202Eb\u2066c\u200Dd\u00ADe\uFEFFf"_s), u"abcdef"_s);
    }

    void aCharacterThatNoFontHasIsReplaced()
    {
        // An unassigned character of a plane that no font covers.
        QCOMPARE(textWithKnownGlyphs(u"a\U0005FFF0é\nŁ"_s, m_font), u"a\uFFFDé\nŁ"_s);
        QCOMPARE(textWithKnownGlyphs(u"Ж Ω ệ"_s, m_font), u"Ж Ω ệ"_s);
    }

    void aWordTooLongForALineIsBrokenAnywhere()
    {
        const QStringList lines = broken(QString(100, u'W'), 100);
        QVERIFY(lines.size() > 1);
        QCOMPARE(lines.join(QString()), QString(100, u'W'));
        for (const QString& line : lines)
            QVERIFY(widthOf(line) <= 100);
    }

    void blanksAtTheEndOfALineAreRemoved()
    {
        const QList<BrokenLine> lines = breakText(u"  Marie   "_s, m_font, 500, 1000);
        QCOMPARE(lines[0].text, u"  Marie"_s);
        QVERIFY(qAbs(lines[0].width - widthOf(u"  Marie"_s)) < 0.01);
        QCOMPARE(broken(u"   "_s, 500), QStringList(u""_s));
    }

    void everyKindOfLineBreakBecomesOne()
    {
        QCOMPARE(drawableText(u"a\rb\r\nc\u2028d\u2029e\u0085f\vg"_s), u"a\nb\nc\nd\ne\nf\ng"_s);
    }

    void accentsAreComposed()
    {
        QCOMPARE(drawableText(u"E\u0301lodie"_s), u"Élodie"_s);
        QCOMPARE(drawableText(u"Nguye\u0302\u0303n"_s), u"Nguyễn"_s);
    }

    void charactersThatNoFontCanShowAreLeftOut()
    {
        QCOMPARE(drawableText(QString::fromUtf16(u"a\u0000b\u0001c\u007fd\u009fe", 9)), u"abcde"_s);
        QCOMPARE(drawableText(u"a\tb"_s), u"a b"_s);
        QCOMPARE(drawableText(QString(u'a') + QChar(0xd800) + u'b' + QChar(0xffff) + u'c'), u"abc"_s);
        QCOMPARE(drawableText(u"a\U0001F600b"_s), u"a\U0001F600b"_s);
    }
};

template class RunnableTests<tst_TextBreaking, QCoreApplication>;
#include "tst_textbreaking.moc"
