#include "Fixtures.h"
#include "attestation/page/SchemeLogos.h"
#include "support/MXLog.h"
#include "tests/common/Files.h"
#include "tests/common/TestCase.h"

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QSvgRenderer>
#include <QTest>

#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

QStringList schemeCodes()
{
    return {u"01"_s, u"02"_s, u"03"_s, u"04"_s, u"05"_s, u"06"_s, u"07"_s, u"08"_s, u"09"_s,
            u"10"_s, u"90"_s, u"91"_s, u"92"_s, u"93"_s, u"94"_s, u"95"_s, u"96"_s};
}

QImage drawn(QSvgRenderer& logo)
{
    QImage image(logo.defaultSize(), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    logo.render(&painter);
    return image;
}

} // namespace

class tst_SchemeLogos : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void everySchemeHasALogoOfItsOwn()
    {
        SchemeLogos logos(stagedBundle());
        QList<QImage> seen;
        for (const QString& code : schemeCodes()) {
            const auto logo = logos.logoNamed(code);
            QVERIFY2(logo && *logo, qPrintable(code));
            const QImage image = drawn(**logo);
            QVERIFY2(!seen.contains(image), qPrintable(code));
            seen.append(image);
        }
    }

    // Texts would need a font, and transparency has no place in an archived document.
    void logosArePathsWithSolidFillsOnly()
    {
        for (const QString& code : schemeCodes()) {
            const QByteArray drawing = contentOf(*stagedBundle().pathForResource(code, u"svg"_s));
            QVERIFY(drawing.contains("<path fill=\"#"));
            for (const char* unwanted : {"<text", "<image", "opacity", "Gradient", "filter", "<use", "style", "rgba"})
                QVERIFY2(!drawing.contains(unwanted), qPrintable(code + u' ' + QLatin1StringView(unwanted)));
        }
    }

    void aSchemeWithoutALogoHasNone()
    {
        SchemeLogos logos(stagedBundle());
        QVERIFY(!logos.logoNamed(u"11"_s));
        QVERIFY(!logos.logoNamed(u"00"_s));
        QVERIFY(!logos.logoNamed(u"-1"_s));
    }

    void aLogoIsReadOnce()
    {
        SchemeLogos logos(stagedBundle());
        QCOMPARE(logos.logoNamed(u"01"_s), logos.logoNamed(u"01"_s));
    }

    void aLogoThatCannotBeDrawnIsNoneAndIsLogged()
    {
        const QTemporaryDir folder;
        QFile broken(folder.filePath(u"01.svg"_s));
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write("not a drawing");
        broken.close();
        std::vector<std::string> lines;
        MXLog::defaultLogger().setLineWriter(
            [&lines](MXLog::Level, std::string_view line) { lines.emplace_back(line); });
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u".*"_s));

        const auto logo = SchemeLogos(Bundle(folder.path())).logoNamed(u"01"_s);
        MXLog::defaultLogger().setLineWriter(nullptr);
        QVERIFY(logo);
        QVERIFY(!*logo);
        QCOMPARE(lines.size(), 1U);
    }
};

QTEST_MAIN(tst_SchemeLogos)
#include "tst_schemelogos.moc"
