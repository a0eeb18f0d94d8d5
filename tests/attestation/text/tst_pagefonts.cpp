#include "attestation/text/TextShaping.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QGuiApplication>
#include <QRawFont>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_PageFonts : public TestCase
{
    Q_OBJECT

private:
    PageFonts m_fonts = pageFonts();

private Q_SLOTS:
    void bothFacesAreOfTheProgramsFamily()
    {
        for (const PageFont& font : {m_fonts.systemFontOfSize(12), m_fonts.boldSystemFontOfSize(20)}) {
            QRawFont own;
            own.loadFromData(font.faces->own().file(), font.size, QFont::PreferNoHinting);
            QCOMPARE(own.familyName(), u"Pelmora Sans"_s);
            QCOMPARE(own.styleName(), font.bold ? u"Bold"_s : u"Regular"_s);
        }
    }

    void allFiguresHaveTheSameWidth_data()
    {
        QTest::addColumn<bool>("bold");
        QTest::newRow("regular") << false;
        QTest::newRow("bold") << true;
    }
    void allFiguresHaveTheSameWidth()
    {
        QFETCH(bool, bold);
        const PageFont font = bold ? m_fonts.boldSystemFontOfSize(12) : m_fonts.systemFontOfSize(12);
        const double width = widthOfText(u"0", font);
        QVERIFY(width > 0);
        for (const QChar digit : u"123456789"_s)
            QCOMPARE(widthOfText(QString(digit), font), width);
        // There is no kerning between two figures.
        QCOMPARE(widthOfText(u"1111111111", font), 10 * width);
        QCOMPARE(widthOfText(u"4711174177", font), 10 * width);
    }

    void metricsAreProportionalToTheSize()
    {
        const PageFont small = m_fonts.systemFontOfSize(9);
        const PageFont large = m_fonts.systemFontOfSize(18);
        QCOMPARE(small.size, 9.0);
        QVERIFY(qAbs(large.ascent - 2 * small.ascent) < 0.1);
        QVERIFY(qAbs(large.lineHeight - 2 * small.lineHeight) < 0.1);
        QVERIFY(small.lineHeight > small.ascent);
    }

    void aSizeWithAHalfPointIsNotRounded()
    {
        const double ten = widthOfText(u"SPECIMEN", m_fonts.systemFontOfSize(10));
        const double tenAndHalf = widthOfText(u"SPECIMEN", m_fonts.systemFontOfSize(10.5));
        QVERIFY(qAbs(tenAndHalf / ten - 1.05) < 0.001);
    }

    void theFamilyHasTheLettersOfNeighbouringCountries()
    {
        const PageFont font = m_fonts.systemFontOfSize(12);
        for (const QChar letter : u"ÀÂÆÇÉÈÊËÎÏÔŒÙÛÜŸàâæçéèêëîïôœùûüÿĄĆĘŁŃÓŚŹŻğĞıİşŞŐŰčřžŇỄễẠịƯơΩέώЖщђЂїґ°«»–—’…€"_s)
            QVERIFY2(font.faces->own().glyphOf(letter.unicode()), qPrintable(QString(letter)));
    }

    void missingFontFilesAreAnError()
    {
        const QTemporaryDir empty;
        const std::expected<PageFonts, Error> fonts = PageFonts::load(Bundle(empty.path()));
        QVERIFY(!fonts);
        QVERIFY(fonts.error().description());
    }

    void aFileThatIsNotAFontIsAnError()
    {
        const QTemporaryDir folder;
        for (const QString& name : {u"PelmoraSans-Regular.ttf"_s, u"PelmoraSans-Bold.ttf"_s})
            QVERIFY(writeFile(folder.filePath(name), "not a font"));
        QVERIFY(!PageFonts::load(Bundle(folder.path())));
    }

    // The characters of a plain text are never taken from another font.
    void theFamilyHasEveryCharacterOfAPlainText()
    {
        for (const PageFont& font : {m_fonts.systemFontOfSize(12), m_fonts.boldSystemFontOfSize(20)}) {
            for (char16_t code = 0; code < 0xffff; ++code) {
                if (isPlainText(QString(QChar(code))))
                    QVERIFY2(font.faces->own().glyphOf(code), qPrintable(QString::number(code, 16)));
            }
        }
    }

    void aFileThatIsDamagedIsAnError_data()
    {
        QTest::addColumn<QString>("damaged");
        QTest::newRow("regular") << u"PelmoraSans-Regular"_s;
        QTest::newRow("bold") << u"PelmoraSans-Bold"_s;
    }
    // One changed bit of an outline, or a truncated file.
    void aFileThatIsDamagedIsAnError()
    {
        QFETCH(const QString, damaged);
        for (const bool isCut : {false, true}) {
            const QTemporaryDir folder;
            for (const QString& name : {u"PelmoraSans-Regular"_s, u"PelmoraSans-Bold"_s}) {
                QByteArray bytes = contentOf(*stagedBundle().pathForResource(name, u"ttf"_s));
                if (name == damaged && isCut)
                    bytes.chop(bytes.size() / 3);
                else if (name == damaged)
                    bytes[bytes.size() / 2] = char(bytes[bytes.size() / 2] ^ 1);
                QVERIFY(writeFile(folder.filePath(name + u".ttf"_s), bytes));
            }
            const std::expected<PageFonts, Error> fonts = PageFonts::load(Bundle(folder.path()));
            QVERIFY(!fonts);
            QVERIFY(fonts.error().localizedDescription().contains(u"Réinstallez l'application"_s));
        }
    }

    void theLicenceIsInTheFolderOfTheFonts()
    {
        QVERIFY(contentOf(QStringLiteral(PELMORA_STAGE_SHARE "/PelmoraSans-LICENSE")).contains("Apache License"));
    }
};

template class RunnableTests<tst_PageFonts, QGuiApplication>;
#include "tst_pagefonts.moc"
