#include "attestation/document/AttestationPdf.h"
#include "attestation/page/PageOfCard.h"
#include "attestation/page/SchemeLogos.h"
#include "card/CardKeys.h"
#include "tests/attestation/document/Tools.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QGuiApplication>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_AttestationPdf : public TestCase
{
    Q_OBJECT

private:
    SchemeLogos m_logos{stagedBundle()};
    PageFonts m_fonts = pageFonts();

    QByteArray documentOf(const CardRecord& card)
    {
        return renderAttestationPdf(pageOfCard(card, {.showRightLabel = true}, m_logos), m_fonts).value();
    }

    QByteArray documentWithNames(const QStringList& names)
    {
        CardRecord card = specimenCard(0);
        QList<BeneficiaryRecord> beneficiaries;
        for (const QString& name : names)
            beneficiaries.append(person(u"SPECIMEN"_s, name));
        card.setBeneficiaries(beneficiaries);
        return documentOf(card);
    }

    static QString textOf(const QByteArray& document)
    {
        const DocumentFile file(document);
        return QString::fromUtf8(toolOutput(u"pdftotext"_s, {u"-raw"_s, file.path(), u"-"_s}));
    }

    static QString informationOf(const QByteArray& document, const QString& name)
    {
        const DocumentFile file(document);
        const QString information = QString::fromUtf8(toolOutput(u"pdfinfo"_s, {file.path()}));
        const QRegularExpression line(u"^%1: +(.*)$"_s.arg(name), QRegularExpression::MultilineOption);
        return line.match(information).captured(1);
    }

    // The output of a Java program.
    static QByteArray javaOutput(const QString& program, const QStringList& arguments)
    {
        QStringList jars;
        for (const QString& name : {u"preflight"_s, u"pdfbox2"_s, u"pdfbox2-tools"_s, u"xmpbox"_s, u"fontbox2"_s,
                                    u"commons-logging"_s, u"jaxb-api"_s, u"javax.activation"_s})
            jars.append(u"/usr/share/java/%1.jar"_s.arg(name));
        const QStringList options{u"-Xshare:auto"_s,
                                  u"-XX:TieredStopAtLevel=1"_s,
                                  u"-Dfile.encoding=UTF-8"_s,
                                  u"-cp"_s,
                                  jars.join(u':'),
                                  program};
        return toolOutput(u"java"_s, options + arguments);
    }

    // Every part of the file as bytes: streams decompressed, strings as written.
    static QByteArray unpacked(const QByteArray& document)
    {
        const DocumentFile file(document);
        return toolOutput(u"qpdf"_s, {u"--qdf"_s, u"--object-streams=disable"_s, file.path(), u"-"_s});
    }

private Q_SLOTS:
    void theDocumentIsOneA4Page_data()
    {
        QTest::addColumn<int>("count");
        for (const int count : {0, 1, 3, 11, 12, 20, 200})
            QTest::newRow(qPrintable(QString::number(count))) << count;
    }
    void theDocumentIsOneA4Page()
    {
        QFETCH(int, count);
        const QByteArray document = documentOf(specimenCard(count));
        QCOMPARE(informationOf(document, u"Pages"_s), u"1"_s);
        QCOMPARE(informationOf(document, u"Page size"_s), u"595 x 842 pts (A4)"_s);
        QVERIFY(isSound(DocumentFile(document)));
    }

    void theMetadataDescribeTheDocumentWithoutThePatient()
    {
        const QByteArray document = documentOf(specimenCard(3));
        QCOMPARE(informationOf(document, u"Title"_s), u"Attestation de droits à l'assurance maladie"_s);
        QCOMPARE(informationOf(document, u"Creator"_s), u"Pelmora"_s);
        for (const QString& name : {u"Author"_s, u"Subject"_s, u"Keywords"_s})
            QCOMPARE(informationOf(document, name), QString());

        const QByteArray bytes = unpacked(document);
        QVERIFY(bytes.contains("Pelmora"));
        for (const QString& personal : {u"SPECIMEN"_s, u"Marie"_s, u"Numéro1"_s, u"269062B12345634"_s, u"2 69 06 2B"_s,
                                        u"185057800608491"_s, u"15031980"_s}) {
            QVERIFY2(!bytes.contains(personal.toUtf8()), qPrintable(personal));
            QVERIFY2(!bytes.contains(personal.toLatin1()), qPrintable(personal));
            const QByteArray utf16(reinterpret_cast<const char*>(personal.utf16()), personal.size() * 2);
            QVERIFY2(!bytes.contains(utf16), qPrintable(personal));
        }
    }

    void onlyTheProgramsFontsAreUsedAndEmbedded()
    {
        const QStringList fonts = fontsOf(DocumentFile(documentOf(specimenCard(3))));
        QCOMPARE(fonts.size(), 2);
        // The columns are: name, type, encoding, embedded, subset (either value), mapped to Unicode.
        for (const QString& font : fonts)
            QVERIFY2(font.contains(QRegularExpression(u"\\+PelmoraSans-.* Identity-H +yes +(yes|no) +yes "_s)),
                     qPrintable(font));
    }

    void theTextIsReadInOrderWithItsAccents()
    {
        const QString text = textOf(documentOf(specimenCard(2))).simplified();
        QCOMPARE(text, u"CPAM de Paris Numero de l'assuré : 2 69 06 2B 123 456 34 Nom de l'assuré : SPECIMEN Marie "
                       "Attestation de droits à l'assurance maladie "
                       "organisme de rattachement sécurité sociale code gestion n° de sécurité sociale de l'assuré "
                       "(à utiliser pour tous les bénéficiaires ci-dessous) modulation du ticket modérateur "
                       "01 751 8801 10 2 69 06 2B 123 456 34 Bénéficiaire(s) nom de famille suivi d'un éventuel nom "
                       "d'usage n° de sécurité sociale du bénéficiaire (pour information) né(e) le / Rang "
                       "SPECIMEN Numéro1 1 85 05 78 006 084 91 15/03/1980 1 "
                       "SPECIMEN Numéro2 1 85 05 78 006 084 91 15/03/1980 1"_s);
    }

    void namesOfEveryAlphabetAreReadBack_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("Vietnamese") << u"Nguyễn Thị Phương Ánh"_s;
        QTest::newRow("Turkish") << u"Ağaoğlu İlkışık Şükrü"_s;
        QTest::newRow("Polish") << u"Świętosława Łącka-Żółć"_s;
        QTest::newRow("Czech") << u"Řehoř Dvořáček"_s;
        QTest::newRow("Romanian") << u"Ștefan Țăran"_s;
        QTest::newRow("Greek") << u"Ελένη Παπαδοπούλου"_s;
        QTest::newRow("Cyrillic") << u"Юлія Щербак Ђорђе"_s;
        QTest::newRow("letters that fonts join") << u"ffi fl fi Affilié Œdipe"_s;
        QTest::newRow("signs") << u"O'Brien-D’Arcy (née) + : / [x]"_s;
    }
    void namesOfEveryAlphabetAreReadBack()
    {
        QFETCH(QString, name);
        const QByteArray document = documentWithNames({name});
        QVERIFY2(textOf(document).contains(u"SPECIMEN "_s + name), qPrintable(textOf(document)));
        for (const QString& font : fontsOf(DocumentFile(document)))
            QVERIFY2(font.contains(u"+PelmoraSans-"_s), qPrintable(font));
    }

    void namesFromRightToLeftAreReadBack_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("Hebrew") << u"אברהם"_s;
        QTest::newRow("Arabic") << u"محمد"_s;
        QTest::newRow("Arabic with the joined lam and alef") << u"سلام"_s;
        QTest::newRow("Arabic with lam and alef at both ends") << u"لامعلا"_s;
        QTest::newRow("Arabic with lam and alef alone") << u"لا"_s;
    }
    // Some programs use the places of the letters. One uses their order in the document, as screen readers do.
    void namesFromRightToLeftAreReadBack()
    {
        QFETCH(const QString, name);
        const DocumentFile file(documentWithNames({name}));
        const QByteArray inOrder = toolOutput(u"mutool"_s, {u"draw"_s, u"-F"_s, u"txt"_s, file.path()});
        QVERIFY2(QString::fromUtf8(inOrder).contains(name), inOrder.constData());
        for (const QByteArray& byPlace : {toolOutput(u"pdftotext"_s, {file.path(), u"-"_s}),
                                          javaOutput(u"org.apache.pdfbox.tools.PDFBox"_s,
                                                     {u"ExtractText"_s, u"-sort"_s, u"-console"_s, file.path()})}) {
            const QString text = QString::fromUtf8(byPlace).normalized(QString::NormalizationForm_KC);
            QVERIFY2(text.contains(name), byPlace.constData());
        }
    }

    // Both glyphs have the same shape.
    void similarLettersOfDifferentScriptsAreReadBackCorrectly()
    {
        QVERIFY(textOf(documentWithNames({u"ÐuroĐorđe"_s})).contains(u"SPECIMEN ÐuroĐorđe"_s));
    }

    void aDamagedLogoGivesAnErrorInFrenchAndNoDocument()
    {
        AttestationPage page = specimenPage(1);
        page.logo = std::make_shared<const SchemeLogo>(SchemeLogo{u"01"_s, std::nullopt});
        const std::expected<QByteArray, Error> document = renderAttestationPdf(page, m_fonts);
        QVERIFY(!document);
        QCOMPARE(document.error().localizedDescription(),
                 u"Le logo du régime (01) est abîmé. Réinstallez l'application."_s);
    }

    void theSamePageAndTimeGiveTheSameBytes()
    {
        const QDateTime time(QDate(2026, 1, 31), QTime(12, 0), Qt::OffsetFromUTC, 3600);
        const auto document = [&] { return renderAttestationPdf(specimenPage(3), m_fonts, {}, time).value(); };
        QCOMPARE(document(), document());
        QVERIFY(document().contains("D:20260131120000+01'00'"));
        QVERIFY(document().contains("<xmp:CreateDate>2026-01-31T12:00:00+01:00</xmp:CreateDate>"));
    }

    void theSpecimensDocumentIsSmall() { QVERIFY(documentOf(specimenCard(3)).size() <= 30 * 1024); }

    void decomposedAccentsAreReadBackComposed()
    {
        const QString text = textOf(documentWithNames({u"E\u0301lodie Nguye\u0302\u0303n"_s}));
        QVERIFY(text.contains(u"SPECIMEN Élodie Nguyễn"_s));
    }

    void aMissingLetterIsTakenFromASystemFontAndEmbedded()
    {
        const QByteArray document = documentWithNames({u"Անի"_s});
        QVERIFY(textOf(document).contains(u"SPECIMEN Անի"_s));
        for (const QString& font : fontsOf(DocumentFile(document)))
            QVERIFY2(font.contains(QRegularExpression(u" yes +(yes|no) +yes "_s)), qPrintable(font));
    }

    // One of the two fonts identifies its glyphs by names, the other one by numbers.
    void lettersThatOnlyFontsOfPostScriptOutlinesHaveAreReadBack_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("glyphs with names") << u"ไทย"_s;
        QTest::newRow("glyphs with numbers") << u"丁七万"_s;
        QTest::newRow("one glyph for two characters") << u"一⼀丁一"_s;
    }
    void lettersThatOnlyFontsOfPostScriptOutlinesHaveAreReadBack()
    {
        QFETCH(const QString, name);
        const DocumentFile file(documentWithNames({name}));
        QVERIFY(isSound(file));
        const QString fonts = fontsOf(file).join(u'\n');
        QVERIFY2(fonts.contains(QRegularExpression(u"CID Type 0C +Identity-H +yes +yes +yes "_s)), qPrintable(fonts));
        for (const QByteArray& text :
             {toolOutput(u"pdftotext"_s, {u"-raw"_s, file.path(), u"-"_s}),
              toolOutput(u"mutool"_s, {u"draw"_s, u"-F"_s, u"txt"_s, file.path()}),
              javaOutput(u"org.apache.pdfbox.tools.PDFBox"_s, {u"ExtractText"_s, u"-console"_s, file.path()})})
            QVERIFY2(QString::fromUtf8(text).contains(u"SPECIMEN "_s + name), text.constData());
    }

    void theDocumentConformsToTheArchiveFormat_data()
    {
        QTest::addColumn<QByteArray>("document");
        QTest::newRow("3 beneficiaries") << documentOf(specimenCard(3));
        QTest::newRow("empty record") << documentOf(CardRecord());
        QTest::newRow("every alphabet") << documentWithNames(
            {u"Nguyễn Şükrü Łącka"_s, u"Ελένη Юлія"_s, u"سلام"_s, QString::fromUtf16(u"a\u0000b\u0007\n\tc\u009f", 8)});
        QTest::newRow("fonts of PostScript outlines") << documentWithNames({u"ไทย 一⼀丁"_s});
        QTest::newRow("characters that no font has") << documentWithNames({u"\U00010380\U0005FFF0 Zoé"_s});
        for (const QString& scheme : {u"2"_s, u"10"_s, u"94"_s}) {
            CardRecord card = specimenCard(20);
            card.setText(CardKey::regimeCode, scheme);
            QTest::newRow(qPrintable(u"scheme "_s + scheme)) << documentOf(card);
        }
    }
    void theDocumentConformsToTheArchiveFormat()
    {
        QFETCH(QByteArray, document);
        const DocumentFile file(document);
        const QByteArray verdict = javaOutput(u"org.apache.pdfbox.preflight.Validator_A1b"_s, {file.path()});
        QVERIFY2(verdict.contains("is a valid PDF/A-1b file"), verdict.constData());
    }
};

template class RunnableTests<tst_AttestationPdf, QGuiApplication>;
#include "tst_attestationpdf.moc"
