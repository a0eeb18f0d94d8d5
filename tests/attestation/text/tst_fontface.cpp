#include "attestation/text/FontFace.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/Files.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace Qt::StringLiterals;

class tst_FontFace : public TestCase
{
    Q_OBJECT

private:
    QString m_path = *stagedBundle().pathForResource(u"PelmoraSans-Regular"_s, u"ttf"_s);

private Q_SLOTS:
    void theMeasuresAreInUnitsOfTheFont()
    {
        const auto face = FontFace::load(m_path);
        QVERIFY(face);
        QCOMPARE(face->unitsPerEm(), 2048.0);
        QCOMPARE(face->ascent(), 1900.0);
        QCOMPARE(face->descent(), 500.0);
        QCOMPARE(face->lineHeight(), 2400.0);
        QVERIFY(face->advanceOf(*face->glyphOf(U'W')) > face->advanceOf(*face->glyphOf(U'i')));
        QVERIFY(!face->glyphOf(U'\u0531'));
    }

    void aFileThatIsNotAFontIsNotLoaded()
    {
        const QTemporaryDir folder;
        QVERIFY(writeFile(folder.filePath(u"a.ttf"_s), "not a font"));
        QVERIFY(!FontFace::load(folder.filePath(u"a.ttf"_s)));
        QVERIFY(!FontFace::load(folder.filePath(u"missing.ttf"_s)));
        QVERIFY(!FontFace::load(m_path, 1));
    }

    void aFontOfPostScriptOutlinesIsLoaded_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<char32_t>("letter");
        QTest::newRow("glyphs with names") << u"Named.otf"_s << U'\u0e01';
        QTest::newRow("glyphs with numbers") << u"Numbered.otf"_s << U'\u4e00';
    }
    void aFontOfPostScriptOutlinesIsLoaded()
    {
        QFETCH(const QString, name);
        QFETCH(const char32_t, letter);
        const auto face = FontFace::load(QStringLiteral(PELMORA_TEST_FONTS "/") + name);
        QVERIFY(face);
        QVERIFY(face->isPostScript());
        QVERIFY(face->glyphOf(letter));
        QVERIFY(!FontFace::load(m_path)->isPostScript());
    }

    void damagedOutlinesAndThoseOfVariableFontsAreNotLoaded()
    {
        const QByteArray bytes = contentOf(QStringLiteral(PELMORA_TEST_FONTS "/Named.otf"));
        const qsizetype record = bytes.indexOf("CFF ");
        QVERIFY(record > 0);
        const qsizetype outlines = qFromBigEndian<qint32>(bytes.constData() + record + 8);
        QByteArray damaged = bytes;
        damaged.replace(outlines, 64, QByteArray(64, '\xff'));
        QByteArray variable = bytes;
        variable.replace(record, 4, "CFF2");
        const QTemporaryDir folder;
        for (const QByteArray& changed : {damaged, variable}) {
            QVERIFY(writeFile(folder.filePath(u"a.otf"_s), changed));
            QVERIFY(!FontFace::load(folder.filePath(u"a.otf"_s)));
        }
    }

    void aLetterWithADamagedOutlineIsMissing()
    {
        QByteArray bytes = contentOf(QStringLiteral(PELMORA_TEST_FONTS "/Named.otf"));
        const qsizetype outlines = qFromBigEndian<qint32>(bytes.constData() + bytes.indexOf("CFF ") + 8);
        // 0x0a calls a subroutine, here without its number.
        bytes.replace(outlines + 19'000, 1'000, QByteArray(1'000, '\x0a'));
        const QTemporaryDir folder;
        QVERIFY(writeFile(folder.filePath(u"a.otf"_s), bytes));
        const auto whole = FontFace::load(QStringLiteral(PELMORA_TEST_FONTS "/Named.otf"));
        const auto damaged = FontFace::load(folder.filePath(u"a.otf"_s));
        QVERIFY(damaged);
        int present = 0;
        int missing = 0;
        for (char32_t letter = U'\u0e01'; letter < U'\u0e2f'; ++letter) {
            QVERIFY(whole->glyphOf(letter));
            ++(damaged->glyphOf(letter) ? present : missing);
        }
        QVERIFY(present > 0);
        QVERIFY(missing > 0);
    }

    void aFontThatMustNotBeEmbeddedIsNotLoaded()
    {
        QByteArray bytes = contentOf(m_path);
        const qsizetype record = bytes.indexOf("OS/2");
        QVERIFY(record > 0);
        qsizetype offset = 0;
        for (int i = 0; i < 4; ++i)
            offset = offset << 8 | uchar(bytes[record + 8 + i]);
        bytes[offset + 9] = 2;
        const QTemporaryDir folder;
        QVERIFY(writeFile(folder.filePath(u"a.ttf"_s), bytes));
        QVERIFY(!FontFace::load(folder.filePath(u"a.ttf"_s)));
    }

    void aFileWithAnyChangedBitIsNotIntact()
    {
        QVERIFY(FontFace::load(m_path)->isIntact());
        QByteArray bytes = contentOf(m_path);
        bytes[5000] = char(bytes[5000] ^ 4);
        const QTemporaryDir folder;
        QVERIFY(writeFile(folder.filePath(u"a.ttf"_s), bytes));
        QVERIFY(!FontFace::load(folder.filePath(u"a.ttf"_s))->isIntact());
    }

    void theContentOfTheFileIsKept() { QCOMPARE(FontFace::load(m_path)->file(), contentOf(m_path)); }
};

template class RunnableTests<tst_FontFace, QCoreApplication>;
#include "tst_fontface.moc"
