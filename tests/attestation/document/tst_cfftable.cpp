#include "attestation/document/CffTable.h"
#include "attestation/text/FontFace.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_CffTable : public TestCase
{
    Q_OBJECT

private:
    static std::string tableOf(const QString& name)
    {
        const auto face = FontFace::load(QStringLiteral(PELMORA_TEST_FONTS "/") + name);
        if (!face)
            qFatal("%s cannot be loaded", qPrintable(name));
        hb_blob_t* blob = hb_face_reference_table(face->face(), HB_TAG('C', 'F', 'F', ' '));
        unsigned length = 0;
        const char* bytes = hb_blob_get_data(blob, &length);
        std::string table(bytes, length);
        hb_blob_destroy(blob);
        return table;
    }

private Q_SLOTS:
    void aTableIsMadeOfTheGlyphsInTheirOrder_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("glyphs with names") << u"Named.otf"_s;
        QTest::newRow("glyphs with numbers") << u"Numbered.otf"_s;
    }
    void aTableIsMadeOfTheGlyphsInTheirOrder()
    {
        QFETCH(const QString, name);
        const std::string table = tableOf(name);
        const std::optional<std::string> made = cffTableWithGlyphs(table, {0, 40, 50, 40});
        QVERIFY(made);
        QVERIFY(made->size() < table.size() / 4);
        // The new table can be read. Its glyphs 1 and 3 are the same.
        QCOMPARE(cffTableWithGlyphs(*made, {0, 1, 2, 3}), made);
        QCOMPARE(cffTableWithGlyphs(*made, {0, 3, 2, 1}), made);
        QVERIFY(cffTableWithGlyphs(*made, {0, 2, 1, 3}) != made);
    }

    void anIndexThatNoGlyphHasIsTheMissingGlyph()
    {
        const std::string table = tableOf(u"Named.otf"_s);
        QCOMPARE(cffTableWithGlyphs(table, {0, 0xffff}), cffTableWithGlyphs(table, {0, 0}));
    }

    void aTableThatEndsEarlyIsRefused()
    {
        for (const QString& name : {u"Named.otf"_s, u"Numbered.otf"_s}) {
            const std::string made = cffTableWithGlyphs(tableOf(name), {0, 40, 50}).value();
            for (std::size_t length = 0; length < made.size(); ++length)
                QVERIFY2(!cffTableWithGlyphs(std::string_view(made).substr(0, length), {0, 1, 2}),
                         qPrintable(QString::number(length)));
        }
    }

    // Nothing outside the table is read, whatever the changed byte means.
    void aTableWithAnyChangedByteIsMadeOrRefused()
    {
        const std::string made = cffTableWithGlyphs(tableOf(u"Numbered.otf"_s), {0, 40, 50}).value();
        int refused = 0;
        for (std::size_t place = 0; place < made.size(); ++place) {
            for (const int byte : {0x00, 0x0c, 0x1d, 0x7f, 0xff}) {
                std::string changed = made;
                changed[place] = char(byte);
                refused += cffTableWithGlyphs(changed, {0, 1, 2}) ? 0 : 1;
            }
        }
        QVERIFY(refused > 0);
    }
};

template class RunnableTests<tst_CffTable, QCoreApplication>;
#include "tst_cfftable.moc"
