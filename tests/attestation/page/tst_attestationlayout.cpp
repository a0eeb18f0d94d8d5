#include "attestation/page/AttestationLayout.h"
#include "attestation/page/SchemeLogos.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/attestation/page/InkItems.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_AttestationLayout : public TestCase
{
    Q_OBJECT

private:
    PageFonts m_fonts = pageFonts();

    PageInk inkOf(const AttestationPage& page, QSizeF frame = {595, 842})
    {
        return AttestationLayout::drawRect(page, frame, m_fonts);
    }

private Q_SLOTS:
    void thePageIsPaintedWhiteFirstThenBordered()
    {
        const PageInk ink = inkOf(AttestationPage());
        const auto* fill = std::get_if<InkFill>(&ink.at(0));
        QVERIFY(fill);
        QCOMPARE(fill->rect, QRectF(0, 0, 595, 842));
        QVERIFY(fill->color == InkColor::White);
        const auto* border = std::get_if<InkStroke>(&ink.at(1));
        QVERIFY(border);
        QCOMPARE(border->rect, QRectF(0, 0, 595, 842));
        QVERIFY(border->color == InkColor::DarkGray);
        QVERIFY(border->onScreenOnly);
    }

    void onlyTheBorderIsMarkedForTheScreenOnly()
    {
        int onScreenOnly = 0;
        for (const InkStroke& stroke : itemsOf<InkStroke>(inkOf(specimenPage(3))))
            onScreenOnly += stroke.onScreenOnly ? 1 : 0;
        QCOMPARE(onScreenOnly, 1);
    }

    void aLogoKeepsItsProportionsInItsBox_data()
    {
        QTest::addColumn<QSize>("natural");
        QTest::addColumn<QRectF>("drawn");
        QTest::newRow("twice as wide as high") << QSize(400, 200) << QRectF(8, 8.5, 166, 83);
        QTest::newRow("twice as high as wide") << QSize(100, 200) << QRectF(8, 0, 50, 100);
        QTest::newRow("of the box's proportions") << QSize(332, 200) << QRectF(8, 0, 166, 100);
        QTest::newRow("square") << QSize(64, 64) << QRectF(8, 0, 100, 100);
        QTest::newRow("small and wide") << QSize(83, 10) << QRectF(8, 40, 166, 20);
    }
    void aLogoKeepsItsProportionsInItsBox()
    {
        QFETCH(QSize, natural);
        QFETCH(QRectF, drawn);
        AttestationPage page;
        page.logo = blackLogo(natural);
        QCOMPARE(page.logo->image->size, natural);
        const QList<InkImage> images = itemsOf<InkImage>(inkOf(page));
        QCOMPARE(images.size(), 1);
        const QRectF rect = images[0].rect;
        QVERIFY(qAbs(rect.x() - drawn.x()) < 1e-4 && qAbs(rect.y() - drawn.y()) < 1e-4);
        QVERIFY(qAbs(rect.width() - drawn.width()) < 1e-4 && qAbs(rect.height() - drawn.height()) < 1e-4);
        QCOMPARE(images[0].logo, page.logo);
    }

    // These ratios are equal in single precision. In double precision they differ, and the logo would be slightly
    // narrower.
    void aLogosRatiosAreComparedInSinglePrecision()
    {
        AttestationPage page;
        page.logo = blackLogo({996'000'000, 600'000'001});
        QCOMPARE(itemsOf<InkImage>(inkOf(page)).value(0).rect, QRectF(8, 0, 166, 100));
    }

    void withoutALogoNoImageIsDrawn() { QVERIFY(itemsOf<InkImage>(inkOf(specimenPage(1))).isEmpty()); }

    void headerTextsAreAtTheirPlaces()
    {
        AttestationPage page = specimenPage(1);
        page.showRightLabel = true;
        const QList<InkText> texts = textsOf(inkOf(page));
        struct Expected
        {
            QString text;
            double y;
            double size;
            bool bold;
        };
        const QList<Expected> expected{
            {u"CPAM de Paris"_s, 123, 13, false},
            {u"Numero de l'assuré : 2 69 06 2B 123 456 34"_s, 148, 13, false},
            {u"Nom de l'assuré : SPECIMEN Marie"_s, 168, 13, false},
            {u"Attestation de droits à l'assurance maladie"_s, 203, 20, true},
        };
        for (qsizetype i = 0; i < expected.size(); ++i) {
            QCOMPARE(texts[i].text, expected[i].text);
            QCOMPARE(texts[i].position, QPointF(8, expected[i].y));
            QCOMPARE(texts[i].font.size, expected[i].size);
            QCOMPARE(texts[i].font.bold, expected[i].bold);
        }
    }

    void aHeaderTextTooLongForItsLineWrapsAboveTheTitle()
    {
        AttestationPage page;
        page.showRightLabel = true;
        page.insuredName = u"DE LA ROCHE-SPECIMEN DES VALLONS ET MONTS D'AUVERGNE Marie-Hélène Élisabeth Anne"_s;
        const QList<InkText> texts = textsOf(inkOf(page));
        QCOMPARE(texts[0].position, QPointF(8, 168));
        QCOMPARE(texts[1].position, QPointF(8, 168 + texts[0].font.lineHeight));
        QCOMPARE(texts[0].text + u' ' + texts[1].text, u"Nom de l'assuré : "_s + *page.insuredName);
        QVERIFY(texts[1].position.y() + texts[1].font.lineHeight <= 203);
        QCOMPARE(texts[2].position, QPointF(8, 203));
    }

    void aHeaderTextWithoutRoomBelowStaysOneLine_data()
    {
        QTest::addColumn<AttestationPage>("page");
        AttestationPage page;
        page.fundName = u"Caisse "_s.repeated(40);
        QTest::newRow("fund") << page;
        page = {};
        page.insuredName = u"SPECIMEN "_s.repeated(60);
        QTest::newRow("name of three lines") << page;
    }
    void aHeaderTextWithoutRoomBelowStaysOneLine()
    {
        QFETCH(const AttestationPage, page);
        qsizetype headerLines = 0;
        for (const InkText& text : textsOf(inkOf(page)))
            headerLines += text.font.size == 13 ? 1 : 0;
        QCOMPARE(headerLines, 1);
    }

    void nothingIsLaidOutBelowThePage()
    {
        AttestationPage page = specimenPage(1);
        page.lines[0].insert(BeneficiaryLineKey::name, QString(1'000'000, u'W') + u"\nX"_s.repeated(100'000));
        const QList<InkText> texts = textsOf(inkOf(page));
        QVERIFY(texts.size() < 100);
        for (const InkText& text : texts)
            QVERIFY(text.position.y() < 842);
    }

    void withoutTheTitleOtherTextsKeepTheirPlaces()
    {
        AttestationPage page = specimenPage(2);
        page.showRightLabel = true;
        const PageInk with = inkOf(page);
        page.showRightLabel = false;
        const PageInk without = inkOf(page);
        QCOMPARE(without.size() + 1, with.size());
        for (const InkText& text : textsOf(without))
            QCOMPARE(placeOf(with, text.text), placeOf(without, text.text));
        QCOMPARE(placeOf(without, u"Attestation de droits à l'assurance maladie"_s), nowhere);
    }

    void anAbsentOrEmptyHeaderValueLeavesItsLineOut_data()
    {
        QTest::addColumn<std::optional<QString>>("value");
        QTest::newRow("absent") << std::optional<QString>();
        QTest::newRow("empty") << std::optional(u""_s);
    }
    void anAbsentOrEmptyHeaderValueLeavesItsLineOut()
    {
        QFETCH(std::optional<QString>, value);
        AttestationPage page = specimenPage(0);
        page.NSS = value;
        const PageInk ink = inkOf(page);
        QCOMPARE(placeOf(ink, u"CPAM de Paris"_s), QPointF(8, 123));
        QCOMPARE(placeOf(ink, u"Nom de l'assuré : SPECIMEN Marie"_s), QPointF(8, 168));
        for (const InkText& text : textsOf(ink))
            QVERIFY(!text.text.startsWith(u"Numero"));
        page.fundName = value;
        page.insuredName = value;
        // The first remaining text is in the organism table.
        QCOMPARE(textsOf(inkOf(page)).value(0).position, QPointF(13.5, 233.5));
    }

    void anEmptyPageHasTheTablesFramesAndHeadersOnly()
    {
        const PageInk ink = inkOf(AttestationPage());
        QCOMPARE(strokesOf(ink),
                 QStringList({u"8.5 230.5 587.5 280.5"_s, u"8.5 280.5 587.5 305.5"_s, u"8.5 305.5 587.5 355.5"_s}));
        for (const InkText& text : textsOf(ink))
            QCOMPARE(text.font.size, 9.0);
    }

    void theTablesAreAtTheirPlaces()
    {
        const PageInk ink = inkOf(specimenPage(3));
        QCOMPARE(strokesOf(ink), QStringList({u"8.5 230.5 587.5 280.5"_s, u"8.5 280.5 587.5 305.5"_s,
                                              u"8.5 305.5 587.5 355.5"_s, u"8.5 355.5 587.5 475.5"_s}));
        QCOMPARE(rulesOf(ink),
                 QStringList({u"218.5 230.5 218.5 280.5"_s, u"293.5 230.5 293.5 280.5"_s, u"473.5 230.5 473.5 280.5"_s,
                              u"218.5 280.5 218.5 305.5"_s, u"293.5 280.5 293.5 305.5"_s, u"473.5 280.5 473.5 305.5"_s,
                              u"473.5 305.5 473.5 355.5"_s, u"473.5 355.5 473.5 475.5"_s}));
    }

    void headersAreGreyAndBodiesWhite()
    {
        const QList<InkFill> fills = itemsOf<InkFill>(inkOf(specimenPage(3)));
        QCOMPARE(fills.size(), 5);
        QVERIFY(fills[1].color == InkColor::HeaderGray);
        QCOMPARE(fills[1].rect, QRectF(8.5, 230.5, 579, 50));
        QVERIFY(fills[2].color == InkColor::White);
        QCOMPARE(fills[2].rect, QRectF(8.5, 280.5, 579, 25));
        QVERIFY(fills[3].color == InkColor::HeaderGray);
        QCOMPARE(fills[3].rect, QRectF(8.5, 305.5, 579, 50));
        QVERIFY(fills[4].color == InkColor::White);
        QCOMPARE(fills[4].rect, QRectF(8.5, 355.5, 579, 120));
    }

    void headerTitlesWrapInTheirColumns()
    {
        const PageInk ink = inkOf(AttestationPage());
        const double pitch = m_fonts.systemFontOfSize(9).lineHeight;
        QCOMPARE(placeOf(ink, u"organisme de rattachement sécurité sociale"_s), QPointF(13.5, 233.5));
        QCOMPARE(placeOf(ink, u"code gestion"_s), QPointF(223.5, 233.5));
        QCOMPARE(placeOf(ink, u"n° de sécurité sociale de l'assuré"_s), QPointF(298.5, 233.5));
        QCOMPARE(placeOf(ink, u"(à utiliser pour tous les bénéficiaires"_s), QPointF(298.5, 233.5 + pitch));
        QCOMPARE(placeOf(ink, u"ci-dessous)"_s), QPointF(298.5, 233.5 + 2 * pitch));
        QCOMPARE(placeOf(ink, u"modulation du ticket"_s), QPointF(478.5, 233.5));
        QCOMPARE(placeOf(ink, u"modérateur"_s), QPointF(478.5, 233.5 + pitch));
        QCOMPARE(placeOf(ink, u"Bénéficiaire(s)"_s), QPointF(13.5, 308.5));
        QCOMPARE(placeOf(ink, u"nom de famille suivi d'un éventuel nom d'usage"_s), QPointF(13.5, 308.5 + pitch));
        QCOMPARE(placeOf(ink, u"n° de sécurité sociale du bénéficiaire"_s), QPointF(298.5, 308.5));
        QCOMPARE(placeOf(ink, u"(pour information)"_s), QPointF(298.5, 308.5 + pitch));
        QCOMPARE(placeOf(ink, u"né(e) le / Rang"_s), QPointF(478.5, 308.5));
        QCOMPARE(textsOf(ink).size(), 12);
        for (const InkText& text : textsOf(ink))
            QVERIFY(text.position.y() + text.font.lineHeight <= (text.position.y() < 300 ? 280.5 : 355.5));
    }

    void theOrganismRowShowsItsThreeValues()
    {
        const QList<InkText> texts = textsOf(inkOf(specimenPage(0)));
        QStringList inRow;
        for (const InkText& text : texts) {
            if (text.position.y() != 283.5)
                continue;
            QCOMPARE(text.font.size, 12.0);
            QVERIFY(!text.font.bold);
            inRow.append(u"%1 %2"_s.arg(text.position.x()).arg(text.text));
        }
        QCOMPARE(inRow, QStringList({u"13.5 01 751 8801"_s, u"223.5 10"_s, u"298.5 2 69 06 2B 123 456 34"_s}));
    }

    void beneficiaryCellsAreAlignedAsTheirColumns()
    {
        const QList<InkText> texts = textsOf(inkOf(specimenPage(2)));
        const QList<InkText> cells = texts.last(8);
        for (int row = 0; row < 2; ++row) {
            const double top = 358.5 + 40 * row;
            const QList<InkText> line = cells.sliced(row * 4, 4);
            QCOMPARE(line[0].text, u"SPECIMEN Numéro%1"_s.arg(row + 1));
            QCOMPARE(line[0].position, QPointF(13.5, top));
            QCOMPARE(line[1].text, u"1 85 05 78 006 084 91"_s);
            QVERIFY(isClose(rightOf(line[1]), 468.5));
            QCOMPARE(line[2].text, u"15/03/1980"_s);
            QVERIFY(isClose(rightOf(line[2]), 554.5));
            QCOMPARE(line[3].text, u"1"_s);
            QVERIFY(isClose(line[3].position.x() + widthOf(line[3]) / 2, 573.5));
            for (const InkText& cell : line) {
                QCOMPARE(cell.position.y(), top);
                QCOMPARE(cell.font.size, 12.0);
            }
        }
    }

    void rowsShrinkWhenThePageIsFull_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<double>("rowHeight");
        QTest::newRow("1") << 1 << 40.0;
        QTest::newRow("3") << 3 << 40.0;
        QTest::newRow("11") << 11 << 40.0;
        QTest::newRow("12") << 12 << 479.0 / 12;
        QTest::newRow("20") << 20 << 479.0 / 20;
        QTest::newRow("200") << 200 << 479.0 / 200;
    }
    void rowsShrinkWhenThePageIsFull()
    {
        QFETCH(int, count);
        QFETCH(double, rowHeight);
        const PageInk ink = inkOf(specimenPage(count));
        const InkStroke body = itemsOf<InkStroke>(ink).constLast();
        QCOMPARE(body.rect, QRectF(8.5, 355.5, 579, rowHeight * count));
        for (int i = 0; i < count; ++i) {
            const QPointF place = placeOf(ink, u"SPECIMEN Numéro%1"_s.arg(i + 1));
            QCOMPARE(place.x(), 13.5);
            QVERIFY(isClose(place.y(), 358.5 + rowHeight * i));
        }
        for (const InkText& text : textsOf(ink).last(4 * count))
            QCOMPARE(text.font.size, 12.0);
        QCOMPARE(rulesOf(ink).constLast(), described({473.5, 355.5}, {473.5, 355.5 + rowHeight * count}));
    }

    void withoutBeneficiariesThereIsNoBody() { QCOMPARE(strokesOf(inkOf(specimenPage(0))).size(), 3); }

    void rowsEndAboveTheBottomMargin()
    {
        AttestationPage page = specimenPage(12);
        // 355 + 12 x 40 = 835, exactly.
        QCOMPARE(itemsOf<InkStroke>(inkOf(page, {595, 843})).constLast().rect.height(), 480.0);
        QCOMPARE(itemsOf<InkStroke>(inkOf(page, {595, 842.5})).constLast().rect.height(), 479.5);
        page.inset.setBottom(7);
        QCOMPARE(itemsOf<InkStroke>(inkOf(page)).constLast().rect.height(), 480.0);
        page.inset.setBottom(50);
        QCOMPARE(itemsOf<InkStroke>(inkOf(page)).constLast().rect.height(), 437.0);
    }

    void theLeftEdgeIsAtTheRightMargin()
    {
        AttestationPage page = specimenPage(1);
        page.logo = blackLogo({400, 200});
        page.inset = QMarginsF(100, 8, 20, 8);
        const PageInk ink = inkOf(page);
        QCOMPARE(itemsOf<InkImage>(ink)[0].rect.x(), 20.0);
        QCOMPARE(placeOf(ink, u"CPAM de Paris"_s), QPointF(20, 123));
        QCOMPARE(strokesOf(ink), QStringList({u"20.5 230.5 599.5 280.5"_s, u"20.5 280.5 599.5 305.5"_s,
                                              u"20.5 305.5 599.5 355.5"_s, u"20.5 355.5 599.5 395.5"_s}));
        QCOMPARE(placeOf(ink, u"01 751 8801"_s), QPointF(25.5, 283.5));
    }

    void theTopMarginMovesOnlyTheHeaderTexts()
    {
        AttestationPage page = specimenPage(1);
        page.logo = blackLogo({400, 200});
        page.showRightLabel = true;
        page.inset.setTop(30);
        const PageInk ink = inkOf(page);
        QVERIFY(isClose(itemsOf<InkImage>(ink)[0].rect.y(), 8.5));
        QCOMPARE(placeOf(ink, u"CPAM de Paris"_s), QPointF(8, 145));
        QCOMPARE(placeOf(ink, u"Nom de l'assuré : SPECIMEN Marie"_s), QPointF(8, 190));
        QCOMPARE(placeOf(ink, u"Attestation de droits à l'assurance maladie"_s), QPointF(8, 225));
        QCOMPARE(strokesOf(ink).value(0), u"8.5 230.5 587.5 280.5"_s);
    }

    void missingValuesGiveBlankCellsWithRules()
    {
        AttestationPage page;
        page.lines = {BeneficiaryLine(), BeneficiaryLine{{u"Name"_s, u""_s}}};
        const PageInk ink = inkOf(page);
        QCOMPARE(textsOf(ink).size(), 12);
        QCOMPARE(rulesOf(ink).size(), 8);
        QCOMPARE(strokesOf(ink).constLast(), u"8.5 355.5 587.5 435.5"_s);
    }

    void anUnformattedNumberIsShownAsStored()
    {
        AttestationPage page = specimenPage(1);
        page.lines[0].insert(u"NSS"_s, u"1 85 05"_s);
        const InkText number = textsOf(inkOf(page)).last(4).at(1);
        QCOMPARE(number.text, u"1 85 05"_s);
        QVERIFY(isClose(rightOf(number), 468.5));
    }

    void aLongNameWrapsInItsColumnAndIsNeverCut()
    {
        AttestationPage page = specimenPage(1);
        const QString name =
            u"SPECIMEN-DE LA ROCHEFOUCAULD-MONTMORENCY Marie-Antoinette-Élisabeth-Geneviève "_s.repeated(4);
        page.lines[0].insert(u"Name"_s, name);
        QStringList words;
        double top = 358.5;
        for (const InkText& text : textsOf(inkOf(page))) {
            if (text.position.x() != 13.5 || text.position.y() < 356)
                continue;
            QVERIFY(isClose(text.position.y(), top));
            QVERIFY(rightOf(text) <= 288.5);
            top += text.font.lineHeight;
            words.append(text.text);
        }
        QVERIFY(words.size() > 8);
        QCOMPARE(words.join(QString()).remove(u' '), QString(name).remove(u' '));
    }
};

template class RunnableTests<tst_AttestationLayout, QCoreApplication>;
#include "tst_attestationlayout.moc"
