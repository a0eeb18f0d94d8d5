#include "attestation/text/TextShaping.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace {

// The characters of the glyphs, from left to right.
QStringList readFromLeft(const ShapedText& shaped, const QString& text)
{
    QStringList parts;
    for (const GlyphRun& run : shaped.runs) {
        for (const PlacedGlyph& glyph : run.glyphs)
            parts.append(text.sliced(glyph.textStart, glyph.textLength));
    }
    return parts;
}

std::vector<PlacedGlyph> glyphsOf(const ShapedText& shaped)
{
    std::vector<PlacedGlyph> glyphs;
    for (const GlyphRun& run : shaped.runs)
        glyphs.insert(glyphs.end(), run.glyphs.begin(), run.glyphs.end());
    return glyphs;
}

} // namespace

class tst_TextShaping : public TestCase
{
    Q_OBJECT

private:
    PageFonts m_fonts = pageFonts();
    PageFont m_font = m_fonts.systemFontOfSize(12);

private Q_SLOTS:
    void theGlyphsOfALatinTextAreInTheOrderOfItsLetters()
    {
        const QString text = u"Zoé ffi"_s;
        const ShapedText shaped = shapedText(text, m_font);
        QCOMPARE(shaped.runs.size(), 1U);
        QCOMPARE(readFromLeft(shaped, text).join(u'|'), u"Z|o|é| |f|f|i"_s);
        double pen = 0;
        for (const PlacedGlyph& glyph : shaped.runs[0].glyphs) {
            QCOMPARE(glyph.position, QPointF(pen, 0));
            pen += glyph.advance;
        }
        QCOMPARE(shaped.width, pen);
        QCOMPARE(widthOfText(text, m_font), pen);
    }

    void lettersThatTheFamilyHasAreNotTakenFromOtherFonts()
    {
        for (const QString& text : {u"Ελένη"_s, u"Юлія"_s, u"Nguyễn"_s}) {
            const ShapedText shaped = shapedText(text, m_font);
            for (const GlyphRun& run : shaped.runs)
                QCOMPARE(run.face, &m_font.faces->own());
            QCOMPARE(readFromLeft(shaped, text).join(QString()), text);
        }
    }

    void aHebrewNameRunsFromRightToLeft()
    {
        const QString text = u"אבג"_s;
        const ShapedText shaped = shapedText(text, m_font);
        QCOMPARE(readFromLeft(shaped, text), QStringList({u"ג"_s, u"ב"_s, u"א"_s}));
        QVERIFY(shaped.runs[0].face != &m_font.faces->own());
    }

    void aNameInTwoScriptsKeepsTheDirectionOfEach()
    {
        const QString text = u"SPECIMEN אבג (Zoé)"_s;
        QCOMPARE(readFromLeft(shapedText(text, m_font), text).join(QString()), u"SPECIMEN גבא (Zoé)"_s);
    }

    void arabicLettersAreJoined()
    {
        const QString text = u"محمد"_s;
        const ShapedText shaped = shapedText(text, m_font);
        QCOMPARE(readFromLeft(shaped, text), QStringList({u"د"_s, u"م"_s, u"ح"_s, u"م"_s}));
        const FontFace& face = *shaped.runs[0].face;
        // Both are the same letter, in its initial and medial forms.
        const std::vector<PlacedGlyph> glyphs = glyphsOf(shaped);
        QVERIFY(glyphs[1].glyph != glyphs[3].glyph);
        QVERIFY(glyphs[3].glyph != *face.glyphOf(U'م'));
    }

    // No composed character exists for these.
    void aCombiningMarkIsPlacedAboveItsLetter()
    {
        const QString text = u"x\u0302y"_s;
        const std::vector<PlacedGlyph> glyphs = glyphsOf(shapedText(text, m_font));
        QCOMPARE(glyphs.size(), 3U);
        const FontFace& face = m_font.faces->own();
        hb_glyph_extents_t mark{};
        QVERIFY(hb_font_get_glyph_extents(face.font(), glyphs[1].glyph, &mark));
        const double middle = glyphs[1].position.x() + (mark.x_bearing + mark.width / 2.0) * m_font.scaleOf(face);
        QVERIFY(qAbs(middle - glyphs[0].advance / 2) < 1);
        const double width = widthOfText(u"xy"_s, m_font);
        QVERIFY(qAbs(shapedText(text, m_font).width - width) < 0.01);
    }

    void everyCharacterBelongsToOneGlyph_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("Arabic, with the joined lam and alef") << u"سلام الأمين"_s;
        QTest::newRow("Hebrew with points") << u"שָׁלוֹם"_s;
        QTest::newRow("Armenian") << u"Անի"_s;
        QTest::newRow("mixed") << u"DUPONT-محمد 12 אב X\u0323\u0302"_s;
        QTest::newRow("characters of two units") << u"\U0001D400a"_s;
    }
    void everyCharacterBelongsToOneGlyph()
    {
        QFETCH(const QString, text);
        QList<qsizetype> read;
        for (const PlacedGlyph& glyph : glyphsOf(shapedText(text, m_font))) {
            for (qsizetype i = 0; i < glyph.textLength; ++i)
                read.append(glyph.textStart + i);
        }
        std::ranges::sort(read);
        QList<qsizetype> all(text.size());
        std::iota(all.begin(), all.end(), qsizetype(0));
        QCOMPARE(read, all);
    }
};

template class RunnableTests<tst_TextShaping, QCoreApplication>;
#include "tst_textshaping.moc"
