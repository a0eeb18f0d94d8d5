#include "Fixtures.h"
#include "tests/common/TestCase.h"

#include <QFontInfo>
#include <QFontMetricsF>
#include <QRawFont>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_PageFonts : public TestCase
{
    Q_OBJECT

private:
    PageFonts m_fonts = pageFonts();

private Q_SLOTS:
    void bothFacesAreTheProgramsOwn()
    {
        for (const PageFont& font : {m_fonts.systemFontOfSize(12), m_fonts.boldSystemFontOfSize(20)}) {
            QCOMPARE(QFontInfo(font.font).family(), u"Pelmora Sans"_s);
            QCOMPARE(QRawFont::fromFont(font.font).familyName(), u"Pelmora Sans"_s);
            QCOMPARE(QRawFont::fromFont(font.font).styleName(), font.bold ? u"Bold"_s : u"Regular"_s);
        }
    }

    void figuresAreAllOfOneWidth_data()
    {
        QTest::addColumn<bool>("bold");
        QTest::newRow("regular") << false;
        QTest::newRow("bold") << true;
    }
    void figuresAreAllOfOneWidth()
    {
        QFETCH(bool, bold);
        const QFontMetricsF metrics(bold ? m_fonts.boldSystemFontOfSize(12).font : m_fonts.systemFontOfSize(12).font);
        const double width = metrics.horizontalAdvance(u'0');
        QVERIFY(width > 0);
        for (const QChar digit : u"123456789"_s)
            QCOMPARE(metrics.horizontalAdvance(digit), width);
        // Nothing happens between two figures either.
        QCOMPARE(metrics.horizontalAdvance(u"1111111111"_s), 10 * width);
        QCOMPARE(metrics.horizontalAdvance(u"4711174177"_s), 10 * width);
    }

    void metricsGrowWithTheSize()
    {
        const PageFont& small = m_fonts.systemFontOfSize(9);
        const PageFont& large = m_fonts.systemFontOfSize(18);
        QCOMPARE(small.size, 9.0);
        QVERIFY(qAbs(large.ascent - 2 * small.ascent) < 0.1);
        QVERIFY(qAbs(large.lineHeight - 2 * small.lineHeight) < 0.1);
        QVERIFY(small.lineHeight > small.ascent);
    }

    void aHalfPointIsHonoured()
    {
        const double ten = QFontMetricsF(m_fonts.systemFontOfSize(10).font).horizontalAdvance(u"SPECIMEN"_s);
        const double tenAndHalf = QFontMetricsF(m_fonts.systemFontOfSize(10.5).font).horizontalAdvance(u"SPECIMEN"_s);
        QVERIFY(qAbs(tenAndHalf / ten - 1.05) < 0.001);
    }

    void theFamilyHasTheLettersOfEveryNeighbour()
    {
        const QRawFont font = QRawFont::fromFont(m_fonts.systemFontOfSize(12).font);
        for (const QChar letter : u"ÀÂÆÇÉÈÊËÎÏÔŒÙÛÜŸàâæçéèêëîïôœùûüÿĄĆĘŁŃÓŚŹŻğĞıİşŞŐŰčřžŇỄễẠịƯơΩέώЖщђЂїґ°«»–—’…€"_s)
            QVERIFY2(font.supportsCharacter(letter), qPrintable(QString(letter)));
    }

    void missingFontFilesAreAnError()
    {
        const QTemporaryDir empty;
        const std::expected<PageFonts, Error> fonts = PageFonts::load(Bundle(empty.path()));
        QVERIFY(!fonts);
        QVERIFY(fonts.error().description());
    }

    void aFileThatIsNoFontIsAnError()
    {
        const QTemporaryDir folder;
        for (const QString& name : {u"PelmoraSans-Regular.ttf"_s, u"PelmoraSans-Bold.ttf"_s}) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("not a font");
        }
        QVERIFY(!PageFonts::load(Bundle(folder.path())));
    }

    void theLicenceLiesBesideTheFonts()
    {
        QFile licence(QStringLiteral(PELMORA_STAGE_SHARE "/PelmoraSans-LICENSE"));
        QVERIFY(licence.open(QIODevice::ReadOnly));
        QVERIFY(licence.readAll().contains("Apache License"));
    }
};

QTEST_MAIN(tst_PageFonts)
#include "tst_pagefonts.moc"
