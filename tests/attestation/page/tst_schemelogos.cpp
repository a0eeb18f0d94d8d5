#include "attestation/page/SchemeLogos.h"
#include "tests/attestation/page/Fixtures.h"
#include "tests/common/Files.h"
#include "tests/common/LogCapture.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QCoreApplication>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList schemeCodes()
{
    return {u"01"_s, u"02"_s, u"03"_s, u"04"_s, u"05"_s, u"06"_s, u"07"_s, u"08"_s, u"09"_s,
            u"10"_s, u"90"_s, u"91"_s, u"92"_s, u"93"_s, u"94"_s, u"95"_s, u"96"_s};
}

} // namespace

class tst_SchemeLogos : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void everySchemeHasItsOwnLogoAndName()
    {
        SchemeLogos logos(stagedBundle());
        QSet<QByteArray> drawings;
        QSet<QString> names;
        for (const QString& code : schemeCodes()) {
            const auto logo = logos.logoNamed(code);
            QVERIFY2(logo && logo->image, qPrintable(code));
            drawings.insert(logo->image->operators);
            names.insert(logo->image->title);
        }
        QCOMPARE(drawings.size(), schemeCodes().size());
        QCOMPARE(names.size(), schemeCodes().size());
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

    void aLogoThatIsDamagedHasNoImageAndIsLogged()
    {
        const QTemporaryDir folder;
        QVERIFY(writeFile(folder.filePath(u"01.logo"_s), "not a drawing"));
        const LogCapture log;
        const auto logo = SchemeLogos(Bundle(folder.path())).logoNamed(u"01"_s);
        QVERIFY(logo);
        QVERIFY(!logo->image);
        QCOMPARE(log.lines().size(), 1);
    }
};

template class RunnableTests<tst_SchemeLogos, QCoreApplication>;
#include "tst_schemelogos.moc"
